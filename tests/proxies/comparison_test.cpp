#include "ling/comparison.h"
#include "bridge/convert.h"
#include "support/python_test.h"
#include "support/table.h"

namespace {

struct Row {
    const char* name;
    const char* left;
    const char* right;
    int order;
};

constexpr const char* kClasses = R"(
class Says:
    def __init__(self, **answers): self.__dict__.update(answers)
    def answer(self, name):
        value = self.__dict__.get(name, NotImplemented)
        if isinstance(value, BaseException): raise value
        return value
    def __lt__(self, other): return self.answer('lt')
    def __gt__(self, other): return self.answer('gt')
    def __eq__(self, other): return self.answer('eq')
    __hash__ = None
class Nothing:
    __lt__ = __gt__ = __eq__ = None
    __hash__ = None
)";

constexpr Row kRows[] = {
    {"Less", "[1]", "[2]", -1},
    {"Greater", "[2]", "[1]", 1},
    {"Equal", "[1, (2,)]", "[1, (2,)]", 0},
    {"SubsetIsLess", "{1}", "{1, 2}", -1},
    {"EqualMappingsWithoutOrder", "{'a': 1}", "{'a': 1}", 0},
    {"LessRaises", "Says(lt=ValueError(), gt=True)", "Says()", 1},
    {"LessAndGreaterRaise", "Says(lt=ValueError(), gt=OSError(), eq=True)", "Says()", 0},
    {"InterruptInLess", "Says(lt=KeyboardInterrupt(), gt=True)", "Says()", 1},
    // An answer that is not `True` itself does not count, but the helper takes what is true.
    {"OneIsNotTrue", "Says(lt=1, gt=True)", "Says()", 1},
    {"HelperTakesWhatIsTrue", "Says(lt=0, gt='yes', eq=0)", "Says()", 1},
    {"HelperAsksForLessLast", "Says(lt='yes', gt=0, eq=0)", "Says()", -1},
    {"HelperEndsWithEqual", "Says(lt=0, gt=0, eq=0)", "Says()", 0},
};
LING_TABLE(ProxyComparison, PythonTest, kRows);

TEST_P(ProxyComparison, AsksLessThenGreaterThenEqualThenTheHelper) {
    const Row& row = GetParam();
    Any left;
    Any right;
    {
        GilGuard gil;
        define("proxy_comparison_test_classes", kClasses);
        PyRef a = eval(row.left);
        PyRef b = eval(row.right);
        left = toLing(a.get());
        right = toLing(b.get());
    }
    EXPECT_EQ(compare_objects(left, right), row.order);
}

class ProxyIdentityOrder : public PythonTest {};

/// What Python cannot order is ordered by identity: the same way at each look, and the other way round when turned.
TEST_F(ProxyIdentityOrder, HoldsWhereNothingElseDoes) {
    GilGuard gil;
    define("proxy_comparison_test_classes", kClasses);
    for (const char* pair :
         {"({'a': 1}, {'a': 2})", "(object(), object())", "([1], (1,))", "([1], 5)", "([1], 'text')", "(1, [1])",
          "(Nothing(), Nothing())", "(Says(lt=ValueError(), gt=ValueError(), eq=ValueError()), Says())"}) {
        SCOPED_TRACE(pair);
        PyRef objects = eval(pair);
        const Any left = toLing(PyTuple_GET_ITEM(objects.get(), 0));
        const Any right = toLing(PyTuple_GET_ITEM(objects.get(), 1));
        const std::int64_t order = compare_objects(left, right);
        EXPECT_NE(order, 0);
        EXPECT_EQ(compare_objects(left, right), order);
        EXPECT_EQ(compare_objects(right, left) < 0, order > 0);
        EXPECT_EQ(compare_objects(left, left), 0);
        EXPECT_EQ(PyErr_Occurred(), nullptr);
    }
}

}  // namespace
