#include "support/python_test.h"
#include "support/script.h"
#include "support/things.h"

/// Values that have no form in `ling` (an integer beyond 64 bits, text with a lone surrogate, a complex number),
/// through every slot of every kind of wrapper: each raises what its conversion raised, and leaves nothing pending.

namespace {

class PendingErrors : public PythonTest {
protected:
    PendingErrors() { defineThings(); }
};

constexpr const char* kAttempts = R"(
import operator

VALUES = {2**64: OverflowError, -2**63 - 1: OverflowError, '\ud800': UnicodeEncodeError, 1j: TypeError}

def wrappers():
    return [things.Thing('box'), things.Bare(), things.add, things.Thing, things, things.failing(2), ling.List([1]),
            ling.Map({'a': 1}), ling.Set([1]), iter(ling.List([1])), ling.List().append, ling.Date]

def set_item(w, key, value): w[key] = value
def delete_item(w, key): del w[key]

# By name: the operation, and what else than the conversion's error may come of it, since it comes first.
OPERATIONS = {
    'set declared': (lambda w, v: setattr(w, 'name', v), ()),
    'set own': (lambda w, v: setattr(w, 'colour', v), ()),
    'get item': (lambda w, v: w[v], ()),
    'set item 0': (lambda w, v: set_item(w, 0, v), ()),
    'set item a': (lambda w, v: set_item(w, 'a', v), ()),
    'set under': (lambda w, v: set_item(w, v, 1), ()),
    'delete item': (lambda w, v: delete_item(w, v), ()),
    'contains': (lambda w, v: v in w, ()),
    'call': (lambda w, v: w(v), (RuntimeError,)),
    'call second': (lambda w, v: w(1, v), (RuntimeError,)),
    'call named': (lambda w, v: w(a=v), (RuntimeError,)),
    'call mixed': (lambda w, v: w(1, b=v), (RuntimeError,)),
    'call many': (lambda w, v: w(1, 2, 3, 4, 5, v), (RuntimeError,)),
    'multiply': (operator.mul, ()),
    'multiply in place': (operator.imul, ()),
}
for operation in (operator.sub, operator.isub, operator.truediv, operator.itruediv, operator.add, operator.iadd,
                  operator.eq, operator.ne, operator.lt, operator.le, operator.gt, operator.ge, operator.contains,
                  operator.concat, operator.iconcat):
    OPERATIONS[operation.__name__] = (operation, ())

def outcome(operation, wrapper, value):
    try:
        result = operation(wrapper, value)
    except BaseException as error:
        result = error
    try:
        len(())  # A call that succeeds with an error pending fails.
    except BaseException as error:
        return f'left {error!r}'
    return result

def isFine(result, value, also):
    if isinstance(value, (str, complex)) and isinstance(result, TypeError):
        return True  # Python itself refuses to multiply by these, and to call what is not callable.
    return isinstance(result, (VALUES[value], TypeError, *also) if also else VALUES[value])

wrong, count = [], 0
for name, (operation, also) in OPERATIONS.items():
    for value in VALUES:
        for wrapper in wrappers():
            result = outcome(operation, wrapper, value)
            count += 1
            if not isFine(result, value, also):
                wrong.append(f'{name} of {type(wrapper).__name__} with {value!a}: {result!r}')
return '\n'.join([str(count), *wrong])
)";

TEST_F(PendingErrors, AreRaisedWhereTheyArise) { EXPECT_EQ(script(kAttempts), "1392"); }

class PendingErrorRows : public PendingErrors, public testing::WithParamInterface<ScriptRow> {};

TEST_P(PendingErrorRows, SayWhatWasWrong) {
    EXPECT_EQ(outcome("l = ling.List([1])\n", GetParam()), GetParam().expected);
}

constexpr ScriptRow kRows[] = {
    {"Attribute", "setattr(l, 'x', 2**64)", "OverflowError: int too big to convert"},
    {"AttributeName", "setattr(l, '\\udfff', 1)",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\udfff' in position 0: surrogates not allowed"},
    {"DeletedAttributeName", "delattr(l, 'a\\udfff')",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\udfff' in position 1: surrogates not allowed"},
    {"Key", "ling.Map()['\\ud800']",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\ud800' in position 0: surrogates not allowed"},
    {"KeywordName", "things.add(**{'\\ud800': 1})",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\ud800' in position 0: surrogates not allowed"},
    {"Complex", "l.append(1j)",
     "TypeError: int() argument must be a string, a bytes-like object or a real number, not 'complex'"},
    {"InsideAContainerOnlyWhenTaken", "x = ling.List([[2**64]])\nreturn x[0] == [2**64]", "true"},
    {"ItemOfAPythonList", "ling.bound_method([2**64], 'at')(0)", "OverflowError: int too big to convert"},
    {"LimitsPass", "l.append(2**63 - 1)\nl.append(-2**63)\nreturn l[1] == 2**63 - 1 and l[2] == -2**63", "true"},
};
INSTANTIATE_TEST_SUITE_P(Rows, PendingErrorRows, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
