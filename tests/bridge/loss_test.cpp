#include "bridge/loss.h"

#include "bridge/convert.h"
#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

#include <limits>

/// What the border does to values and nobody would guess: a row here for each in docs/python_view.md.

namespace {

class BorderTest : public ThingsTest {
protected:
    BorderTest() { expectValuesToStay(); }
};

/// `told` answers what a value becomes, and the warnings on the way; `stopped` passes it where they are errors.
constexpr const char* kBefore = R"(
import datetime, decimal, enum, fractions, ipaddress, warnings
class DerivedDecimal(decimal.Decimal): pass
class Level(enum.IntEnum): LOW = 1
class Float32:  # As the numbers of number packages are.
    def __int__(self): return 2
    def __float__(self): return 2.5
class Incomparable(Float32):
    def __eq__(self, other): raise ValueError('incomparable')
class Array:
    def __int__(self): raise TypeError('only length-1 arrays can be converted to Python scalars')
    def __float__(self): raise TypeError('only length-1 arrays can be converted to Python scalars')
    def __getitem__(self, index): return index
def told(value):
    with warnings.catch_warnings(record=True) as seen:
        warnings.simplefilter('always')
        kept = things.same(value)
    return [kept, *[f'{w.category.__name__}: {w.message}' for w in seen]]
def stopped(function, *arguments):
    with warnings.catch_warnings():
        warnings.simplefilter('error', ling.python.LossWarning)
        return probe(function, *arguments)
utc = datetime.timezone.utc
)";

constexpr const char* kRange =
    "[-9223372036854775808, 'LossWarning: a float that is infinite or out of range becomes the least integer']";
constexpr const char* kFractionOfTwo = "[2, 'LossWarning: a number becomes an integer and loses its fraction']";

constexpr ScriptRow kRows[] = {
    {"Infinity", "told(float('inf'))", kRange},
    {"LargeFloat", "told(-1e300)", kRange},
    {"Fraction", "told(fractions.Fraction(5, 2))", kFractionOfTwo},
    {"NumberOfAPackage", "told(Float32())", kFractionOfTwo},
    {"IncomparableNumber", "told(Incomparable())", kFractionOfTwo},
    {"DerivedDecimal", "told(DerivedDecimal('2.5'))", kFractionOfTwo},
    {"AwareTime", "told(datetime.time(1, tzinfo=utc))",
     "[datetime.time(1, 0), 'LossWarning: an aware time or date-time loses its zone']"},
    {"AwareDateTime", "told(datetime.datetime(2024, 1, 1, tzinfo=utc))",
     "[datetime.datetime(2024, 1, 1, 0, 0), 'LossWarning: an aware time or date-time loses its zone']"},
    {"NothingIsLost",
     "[told(v) for v in (2.5, float('nan'), 2.0, -2.0 ** 63, fractions.Fraction(4, 2), DerivedDecimal(2), Level.LOW, "
     "datetime.time(1))]",
     "[[2.5], [nan], [2], [-9223372036854775808], [2], [2], [1], [datetime.time(1, 0)]]"},
    {"OnceForEachPlace",
     "with warnings.catch_warnings(record=True) as seen:\n    warnings.simplefilter('default')\n"
     "    for number in range(3):\n        things.same(float('inf'))\n    things.same(1e300)\nreturn len(seen)",
     "2"},
    {"AFilterStopsAnArgument", "l = ling.List()\nreturn stopped(l.append, float('inf')), len(l)",
     "('LossWarning: a float that is infinite or out of range becomes the least integer', 0)"},
    {"AFilterStopsAnAttribute", "t = things.Thing('x')\nreturn stopped(setattr, t, 'name', Float32()), t.name",
     "('LossWarning: a number becomes an integer and loses its fraction', 'x')"},
    {"TheCategoryIsFoundByItsName",
     "import pickle\nfrom ling.python import LossWarning\n"
     "return [pickle.loads(pickle.dumps(LossWarning)) is LossWarning, issubclass(LossWarning, UserWarning)]",
     "[True, True]"},
    // Without a word.
    {"WholeFloat", "told(2.0)", "[2]"},
    {"MutableBytes", "told(bytearray(b'x'))", "[b'x']"},
    {"IntegersOfOtherTypes", "[told(Level.LOW), told(ipaddress.IPv4Address(7)), type(things.same(Level.LOW))]",
     "[[1], [7], <class 'int'>]"},
    {"TimesOfTheHost", "list(things.rarities())[2:4]", "[datetime.time(1, 2, 3), datetime.time(1, 2, 3)]"},
    {"LongerArray", "things.same(Array())", "TypeError: only length-1 arrays can be converted to Python scalars"},
    {"LongerArrayInAList", "a = Array()\nreturn things.same([a])[0] is a", "true"},
    {"TruthWithoutALength", "bool(things.Thing('x'))", "RuntimeError: Property 'length' not found in: <things.Thing>."},
    {"IterationOfWhatHasNone", "iter(things.Thing('x'))",
     "SystemError: <built-in function iter> returned NULL without setting an exception"},
    {"EveryMemberOfATypeIsCallable", "[callable(ling.List()), probe(ling.List())]",
     "[True, 'RuntimeError: Non-callable object: []']"},
    {"KeysOfAMapAreAProperty",
     "m = ling.Map({(1, 2): 3})\nreturn [probe(m.__getitem__, (1, 2)), dict(zip(m.keys, m.values))]",
     "[\"KeyError: '(1, 2)'\", {(1, 2): 3}]"},
    {"IterationEndsAtAStoredError", "f = things.flawed()\nreturn [list(f), len(f), probe(f.__getitem__, 1)]",
     "[[1], 3, 'RuntimeError: No.']"},
    {"DeletingAMemberOfAModule",
     "f = things.later\ndel things.later\nseen = hasattr(things, 'later')\nthings.later = f\n"
     "return [seen, hasattr(things, 'later'), probe(delattr, ling.find_module('python.builtins'), 'len')]",
     "[False, True, 'AttributeError: len']"},
    {"NegativePositions", "[ling.List([1, 2])[-1], things.Row()[-1]]", "[2, -1]"},
};
LING_TABLE(Border, BorderTest, kRows);

TEST_P(Border, DoesWhatIsDocumented) { EXPECT_EQ(outcome(kBefore, GetParam()), GetParam().expected); }

class LossWithoutPython : public PythonTest {};

TEST_F(LossWithoutPython, IsReportedAsUnraisableWhereAFilterMakesItAnError) {
    const GilGuard gil;
    run("import sys, warnings\nseen = []\nhook, filters = sys.unraisablehook, warnings.filters[:]\n"
        "sys.unraisablehook = lambda details: seen.append(str(details.exc_value))\nwarnings.simplefilter('error')");
    const PyRef infinity = eval("float('inf')");
    const Any value = toLing(infinity.get());
    EXPECT_EQ(PyErr_Occurred(), nullptr);
    EXPECT_EQ(value.asInteger(), std::numeric_limits<std::int64_t>::min());
    run("sys.unraisablehook = hook\nwarnings.filters[:] = filters\nwarnings._filters_mutated()");
    const PyRef seen = eval("seen == ['a float that is infinite or out of range becomes the least integer']");
    EXPECT_EQ(seen.get(), Py_True);
}

}  // namespace
