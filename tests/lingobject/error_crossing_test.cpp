#include "support/puppets.h"
#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

/// Errors of `ling` as exceptions: which ones they are, what surrounds them, and that they stay the same through any
/// nesting.

namespace {

constexpr const char* kPrelude = R"(
def caught(function, *arguments):
    try:
        function(*arguments)
    except Exception as error:
        return error
def nest(depth):
    return things.refuse('deep') if depth == 0 else puppets.thrice(lambda: nest(depth - 1))
)";

constexpr ScriptRow kRows[] = {
    {"PlainError", "caught(ling.List, 5)",
     "RuntimeError(\"Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.\")"},
    {"PlainErrorCarriesNothing", "hasattr(caught(ling.List, 5), 'ling')", "False"},
    {"ErrorClass", "caught(things.refuse, 'no').__class__.__mro__[:2]",
     "(<class 'things.Refusal'>, <class 'RuntimeError'>)"},
    {"ErrorClassIsOne",
     "type(caught(things.refuse, 'a')) is type(caught(things.refuse, 'b')) is things.Refusal.exception", "True"},
    {"ErrorClassOfAnIterationsEnd", "ling.StopIteration.exception", "<class 'StopIteration'>"},
    {"ErrorClassHasNoError", "things.Refusal.exception.ling", "None"},
    {"NoErrorClass", "things.Thing.exception", "AttributeError: 'ling~ling`Class' object has no attribute 'exception'"},
    {"ErrorRaisesAgain", "caught(lambda: caught(things.refuse, 'no').ling.message)", "Refusal()"},
    {"ErrorIsNotCallable", "caught(caught(things.refuse, 'no').ling)",
     "TypeError(\"'>LingObject' object is not callable\")"},
    {"ErrorRaisesAgainWhenIterated", "caught(iter, caught(things.refuse, 'no').ling)", "Refusal()"},
    {"RaisedFromALingError",
     "def work():\n    try: things.refuse('no')\n    except RuntimeError as error: raise KeyError('k') from error\n"
     "error = caught(work)\nreturn [repr(error.__cause__), ling.display(error.__cause__.ling)]",
     "['Refusal()', 'no']"},
    {"ContextOfALingError",
     "def work():\n    try: {}['k']\n    except KeyError: things.refuse('no')\n"
     "error = caught(work)\nreturn [repr(error), repr(error.__context__), error.__cause__]",
     "['Refusal()', \"KeyError('k')\", None]"},
    {"ErrorGroup",
     "try: raise ExceptionGroup('all', [caught(things.refuse, 'no'), ValueError()])\n"
     "except* things.Refusal.exception as group: found = group.exceptions\nexcept* ValueError: pass\n"
     "return ling.display(found[0].ling)",
     "no"},
    {"NestedErrorIsTheSame",
     "first = caught(things.refuse, 'no')\n"
     "def again(): raise first\n"
     "outer = caught(puppets.thrice, lambda: puppets.thrice(lambda: puppets.thrice(again)))\n"
     "return [ling.is_same(outer.ling, first.ling), outer is first, ling.display(outer.ling)]",
     "[True, False, 'no']"},
    {"DeeplyNestedKeepsItsMessage", "[ling.display(caught(nest, depth).ling) for depth in (0, 1, 3)]",
     "['deep', 'deep', 'deep']"},
    {"TracebackNamesTheFramesOfThisCall",
     "import traceback\nerror = caught(nest, 3)\n"
     "return [frame.name for frame in traceback.extract_tb(error.__traceback__)]",
     "['caught', 'nest']"},
    {"TracebackOfAPythonErrorThroughLing",
     "def fails(): raise ValueError('inner')\n"
     "error = caught(puppets.thrice, lambda: puppets.thrice(fails))\nreturn repr(error)",
     "RuntimeError('inner')"},
    {"TakesANote", "error = caught(things.refuse, 'no')\nerror.add_note('seen')\nreturn error.__notes__",
     "['no', 'seen']"},
    {"MessageIsANote", "import traceback\nreturn traceback.format_exception_only(caught(things.refuse, 'no'))",
     "['things.Refusal\\n', 'no\\n']"},
    {"CauseIsTheExceptionThatWentIn",
     "def fails(): raise ValueError('inner')\n"
     "error = caught(puppets.thrice, fails)\n"
     "import traceback\nlast = traceback.extract_tb(error.__cause__.__traceback__)[-1].name\n"
     "return [repr(error.__cause__), error.__suppress_context__, last, hasattr(error, 'ling')]",
     "[\"ValueError('inner')\", True, 'fails', False]"},
    {"EachCrossingHasItsCause",
     "def fails(): raise ValueError('inner')\n"
     "error = caught(puppets.thrice, lambda: puppets.thrice(fails))\n"
     "return [repr(error.__cause__), repr(error.__cause__.__cause__)]",
     "[\"RuntimeError('inner')\", \"ValueError('inner')\"]"},
};
LING_TABLE(ErrorCrossing, ThingsTest, kRows);

TEST_P(ErrorCrossing, ReadsAsInPython) { EXPECT_EQ(outcome(kPrelude, GetParam()), GetParam().expected); }

}  // namespace
