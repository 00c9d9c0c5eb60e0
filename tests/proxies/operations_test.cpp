#include "support/python_test.h"
#include "support/script.h"

namespace {

/// One operation of a proxy, called as `ling` code calls it, and what Python shows of the outcome. The object is
/// printed after the operation, so that what it did to it shows as well.
struct Operation {
    const char* name;
    const char* object;
    const char* call;  // In terms of `x`.
    const char* expected;
};

class ProxyOperation : public PythonTest, public testing::WithParamInterface<Operation> {};

TEST_P(ProxyOperation, GivesWhatPythonGives) {
    const Operation& row = GetParam();
    EXPECT_EQ(script(std::string("x = ") + row.object + "\nreturn probe(lambda: " + row.call + ") + ' | ' + repr(x)"),
              row.expected);
}

constexpr Operation kSequence[] = {
    {"At", "[10, 20, 30]", "call(x, 'at', 1)", "20 | [10, 20, 30]"},
    {"AtFromTheEnd", "[10, 20, 30]", "call(x, 'at', -1)", "30 | [10, 20, 30]"},
    {"AtPastTheEnd", "[10]", "call(x, 'at', 1)", "RuntimeError: list index out of range | [10]"},
    {"AtInTuple", "(10, 20)", "call(x, 'at', -3)", "RuntimeError: tuple index out of range | (10, 20)"},
    {"AtByText", "[10]", "call(x, 'at', 'a')", "RuntimeError: list indices must be integers or slices, not str | [10]"},
    {"AtHugeIndex", "[10]", "call(x, 'at', 2**62)", "RuntimeError: list index out of range | [10]"},
    {"AtOr", "[10]", "call(x, 'atOr', 0, 5)", "10 | [10]"},
    {"AtOrDefault", "[10]", "call(x, 'atOr', 3, 5)", "5 | [10]"},
    {"AtOrBadIndex", "[10]", "call(x, 'atOr', None, 5)", "5 | [10]"},
    {"Set", "[10, 20]", "call(x, 'set', -1, 'z')", "None | [10, 'z']"},
    {"SetPastTheEnd", "[10]", "call(x, 'set', 1, 0)", "RuntimeError: list assignment index out of range | [10]"},
    {"SetInTuple", "(1,)", "call(x, 'set', 0, 0)",
     "RuntimeError: The method is missing: __setitem__, target object: (1,). | (1,)"},
    {"Append", "[]", "call(x, 'append', x)", "None | [[...]]"},
    {"AppendAtClamps", "[1]", "call(x, 'appendAt', 99, 2)", "None | [1, 2]"},
    {"Extend", "[1]", "call(x, 'extend', (2, 3))", "None | [1, 2, 3]"},
    {"ExtendByNumber", "[1]", "call(x, 'extend', 5)", "RuntimeError: 'int' object is not iterable | [1]"},
    {"Pop", "[1, 2, 3]", "call(x, 'pop', 0)", "1 | [2, 3]"},
    {"PopLast", "[1, 2, 3]", "call(x, 'pop')", "3 | [1, 2]"},
    {"PopEmpty", "[]", "call(x, 'pop')", "RuntimeError: pop from empty list | []"},
    {"RemoveAtTwo", "[0, 1, 2, 3]", "call(x, 'removeAt', 1, 2)", "None | [0, 3]"},
    {"RemoveAtNone", "[0, 1]", "call(x, 'removeAt', 1, 0)", "None | [0, 1]"},
    {"RemoveAtTooMany", "[0, 1]", "call(x, 'removeAt', 1, 5)",
     "RuntimeError: list assignment index out of range | [0]"},
    {"RemoveOne", "[1, 1]", "call(x, 'removeOne', 1)", "True | [1]"},
    {"RemoveOneAbsent", "[1]", "call(x, 'removeOne', 5)", "False | [1]"},
    {"IndexOf", "[5, 6, 5]", "call(x, 'indexOf', 5, 1)", "2 | [5, 6, 5]"},
    {"IndexOfAbsent", "[5]", "call(x, 'indexOf', 7)", "-1 | [5]"},
    {"IndexOfNarrowsTheStart", "[5]", "call(x, 'indexOf', 5, 2**32)", "0 | [5]"},
    {"Contains", "[None]", "call(x, 'contains', None)", "True | [None]"},
    {"Length", "range(7)", "read(x, 'length')", "7 | range(0, 7)"},
    {"Clear", "[1]", "call(x, 'clear')", "None | []"},
};
INSTANTIATE_TEST_SUITE_P(Sequence, ProxyOperation, testing::ValuesIn(kSequence),
                         [](const auto& row) { return row.param.name; });

constexpr Operation kMapping[] = {
    {"Get", "{'a': 1}", "call(x, 'get', 'a', 0)", "1 | {'a': 1}"},
    {"GetDefault", "{}", "call(x, 'get', 'a', 0)", "0 | {}"},
    {"GetIntegerKey", "{1: 'x'}", "call(x, 'get', 1)", "'x' | {1: 'x'}"},
    {"GetTupleKey", "{(1, 2): 'x'}", "call(x, 'get', (1, 2), 0)", "'x' | {(1, 2): 'x'}"},
    {"GetUnhashable", "{}", "call(x, 'get', [], 0)", "RuntimeError: unhashable type: 'list' | {}"},
    {"DefaultDictIsNotAsked", "__import__('collections').defaultdict(list)", "call(x, 'get', 'k', 0)",
     "0 | defaultdict(<class 'list'>, {})"},
    {"Contains", "{None: 1}", "call(x, 'contains', None)", "True | {None: 1}"},
    {"Set", "{}", "call(x, 'set', 'k', x)", "None | {'k': {...}}"},
    {"SetUnhashable", "{}", "call(x, 'set', {}, 1)", "RuntimeError: unhashable type: 'dict' | {}"},
    {"Remove", "{'a': 1}", "call(x, 'remove', 'a')", "1 | {}"},
    {"RemoveAbsent", "{}", "call(x, 'remove', 'a')", "RuntimeError: 'a' | {}"},
    {"Length", "{1: 2}", "read(x, 'length')", "1 | {1: 2}"},
    {"Keys", "{1: 'x', 2: 'y'}", "list(read(x, 'keys'))", "[1, 2] | {1: 'x', 2: 'y'}"},
    {"Values", "{1: 'x', 2: 'y'}", "list(read(x, 'values'))", "['x', 'y'] | {1: 'x', 2: 'y'}"},
    {"Clear", "{1: 2}", "call(x, 'clear')", "None | {}"},
};
INSTANTIATE_TEST_SUITE_P(Mapping, ProxyOperation, testing::ValuesIn(kMapping),
                         [](const auto& row) { return row.param.name; });

constexpr Operation kSet[] = {
    {"InsertNew", "{2}", "call(x, 'insert', 1)", "True | {1, 2}"},
    {"InsertPresent", "{1}", "call(x, 'insert', 1)", "False | {1}"},
    {"InsertUnhashable", "{1}", "call(x, 'insert', [])", "RuntimeError: unhashable type: 'list' | {1}"},
    {"Remove", "{1}", "call(x, 'remove', 1)", "True | set()"},
    {"RemoveAbsent", "{1}", "call(x, 'remove', 3)", "False | {1}"},
    {"RemoveUnhashable", "{1}", "call(x, 'remove', [1])", "False | {1}"},
    {"Extend", "set()", "call(x, 'extend', [1, 2, 2])", "None | {1, 2}"},
    {"Contains", "{1}", "call(x, 'contains', 1)", "True | {1}"},
    {"Length", "{1, 2}", "read(x, 'length')", "2 | {1, 2}"},
    {"Clear", "{1}", "call(x, 'clear')", "None | set()"},
};
INSTANTIATE_TEST_SUITE_P(Set, ProxyOperation, testing::ValuesIn(kSet), [](const auto& row) { return row.param.name; });

}  // namespace
