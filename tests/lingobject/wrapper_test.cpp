#include "support/python_test.h"
#include "support/script.h"
#include "support/table.h"
#include "support/things.h"

#include "bridge/convert.h"
#include "ling/ling.h"

namespace {

constexpr ScriptRow kRows[] = {
    {"Property", "t.name", "'box'"},
    {"ReadOnlyProperty", "t.size", "3"},
    {"SetProperty", "t.name = 'can'\nreturn t.name", "can"},
    {"SetterRefuses", "return probe(setattr, t, 'stock', -1)", "RuntimeError: stock: Stock cannot be negative."},
    {"SetReadOnly", "setattr(t, 'size', 4)", "RuntimeError: Read-only attribute: size."},
    {"SetField", "t.mark = 5\nreturn call(t, 'greet') + str(read(t, 'name'))", "box greets youbox"},
    {"SetFieldOfWrongType", "setattr(t, 'mark', 'x')",
     "RuntimeError: mark: Field 'mark' takes a value of type 'Option<Integer>', not 'ling.String'."},
    {"SetUndeclared", "t.colour = 'red'\nreturn t.colour", "red"},
    {"DeleteUndeclared", "t.colour = 1\ndel t.colour\nreturn probe(lambda: t.colour)",
     "AttributeError: 'ling~things`Thing' object has no attribute 'colour'"},
    {"GetterFails", "t.broken", "RuntimeError: Cannot be read."},
    {"Unknown", "t.nothing", "AttributeError: 'ling~things`Thing' object has no attribute 'nothing'"},
    {"MessageAboutALargeValue",
     "return [len(probe(each)) < 300 for each in (lambda: read(ling.List(range(10**5)), 'nothing'),"
     " lambda: t.greet('you', ling.List(range(10**5))), lambda: ling.List([1]) - 1, lambda: ling.Integer('x' * 10**5),"
     " lambda: ling.List(range(10**5)) - 1, lambda: ling.Map()['x' * 10**4])]",
     "[True, True, True, True, True, False]"},
    {"PrivateMemberNeverReached", "t._hidden", "AttributeError: 'ling~things`Thing' object has no attribute '_hidden'"},
    {"PrivateStoreGoesToLing", "t._own = 3\nreturn probe(lambda: t._own)",
     "AttributeError: 'ling~things`Thing' object has no attribute '_own'"},
    {"MethodIsCallable", "return repr(callable(t.greet)) + t.greet()", "Truebox greets you"},
    {"BoundMethodOutlivesTheObject",
     "m, n = t.greet, t.greet\ndel t\nsame = m == n\nreturn [m(), n('me'), n(whom='us'), same, m is n, "
     "ling.kind_of(m), "
     "hash(m) == hash(n), repr(m) == repr(n), ling.is_same(things.same(m), m)]",
     "['box greets you', 'box greets me', 'box greets us', True, False, 'function', True, True, True]"},
    {"BoundMethodBecomesAValueWhileItIsCalled",
     "m = t.greet\ndel t\nclass Whom:\n    @property\n    def __class__(self):\n        things.same(m)\n"
     "        return str\nreturn [probe(lambda: m(Whom()))[:33], m('me')]",
     "[\"RuntimeError: Argument 'whom' of \", 'box greets me']"},
    {"BoundMethodIsReplacedByTheObject", "m = t.greet\nbefore = m()\nt.greet = 5\nreturn [before, m(), t.greet]",
     "['box greets you', 'box greets you', 5]"},
    {"LazyResult", "t.lazy()", "42"},
    {"TypeName", "type(t).__name__", "'ling~things`Thing'"},
    {"PlainTypeName", "type(things.Bare()).__name__", "'>LingObject'"},
    {"PlainDoc", "type(things.Bare()).__doc__", "'Wrapper around of a Ling object'"},
    {"TypeDoc", "type(t).__doc__", "'A thing with a name.'"},
    {"ProxyMadeByHand", "[probe(lambda: ling.python.PythonProxy()), probe(lambda: ling.python.FunctionPython())]",
     "[\"RuntimeError: Instances of the class 'ling.python.PythonProxy' stand for Python objects: they are made by "
     "converting one.\", \"RuntimeError: Instances of the class 'ling.python.FunctionPython' stand for Python objects: "
     "they are made by converting one.\"]"},
    {"ModuleMadeByHand", "ling.python.ModulePython('x')",
     "RuntimeError: Instances of the class 'ling.python.ModulePython' stand for Python modules: they are made by "
     "exporting one."},
    {"OneLanguage", "ling.is_same(ling.python.LanguagePython(), ling.python.LanguagePython.instance)", "True"},
    {"ClassOfAnArgumentIsReplaced",
     "import gc\nclass B: pass\nclass A:\n    def __getitem__(self, index): raise IndexError\n    @property\n"
     "    def __class__(self):\n        object.__dict__['__class__'].__set__(self, B)\n        gc.collect()\n"
     "        return B\na = A()\ndel A\nreturn things.same(a) is a",
     "true"},
    {"NoSubclass", "type('Sub', (type(t),), {})", "TypeError: type 'ling~things`Thing' is not an acceptable base type"},
    {"ReadOnlyPropertyThroughTheType", "type(t).size.__set__(t, 4)",
     "AttributeError: attribute 'size' of 'ling~things`Thing' objects is not writable"},
    {"ClassMethodTable", "type(things.Row()).__dict__['make'].__doc__", "'() -> Integer\\n\\n-'"},
    {"ClassMethodOfAnObject", "things.Row().make()", "5"},
    {"MethodTable", "type(t).__dict__['greet'].__doc__", "'(self, whom: String) -> String\\n\\n-'"},
    {"PropertyTable", "type(t).size.__doc__", "'Always three.'"},
    {"PrivateNotInTables", "return '_hidden' in type(t).__dict__", "false"},
    {"BigInteger", "setattr(t, 'name', 2**64)", "OverflowError: int too big to convert"},
    {"LoneSurrogateName", "getattr(t, '\\ud800')",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\ud800' in position 0: surrogates not allowed"},
    {"Members",
     "w = things.weak(t)\nw.stock = 4\nw.colour = 'red'\nw.mark = 5\nseen = [t.stock, t.colour, w.name, w.greet()]\n"
     "del w.colour\nreturn seen + [hasattr(t, 'colour'), hasattr(w, 'nothing'), hasattr(w, 'lock'), w - 1]",
     "[4, 'red', 'box', 'box greets you', False, False, False, '1']"},
    {"Texts",
     "w = things.weak(t)\nreturn [str(w) == str(t), repr(w) == repr(t), w.__doc__ == t.__doc__, 'mark' in w.__dir__]",
     "[True, True, True, True]"},
    {"Comparison",
     "w = things.weak(t)\nl = ling.List([1])\nreturn [w == t, t == w, hash(w) == hash(t), len({w, t}), "
     "things.weak(l) == l, things.weak(l) < ling.List([2])]",
     "[True, True, True, 1, True, True]"},
    {"Items",
     "l = ling.List([1, 2, 3])\nw = things.weak(l)\nw[0] = 7\ndel w[1]\nw += [9]\n"
     "w = things.weak(l)\nreturn [list(w), list(l), w[-1], len(w), 7 in w, [*iter(w)]]",
     "[[7, 3, 9], [7, 3, 9], 9, 3, True, [7, 3, 9]]"},
    {"Calls",
     "import inspect\nw = things.weak(things.add)\n"
     "return [w(1, 2), w(b=3, a=1), inspect.signature(w) == inspect.signature(things.add), w.__name__]",
     "[3, 4, True, 'add']"},
    {"IsItself",
     "w = things.weak(t)\nreturn [ling.kind_of(w), ling.is_same(w, t), ling.is_same(things.same(w), w), "
     "ling.is_same(ling.bound_method(w, 'lock')(), t)]",
     "['weak_reference', False, True, True]"},
    {"IsAnOperandAsItsTarget", "l = ling.List([1])\nw = things.weak(l)\nreturn [list(l + w), list(w + w)]",
     "[[1, 1], [1, 1]]"},
    {"TargetIsGone",
     "w = things.weak(things.Thing('x'))\nreturn [str(w), repr(w), hasattr(w, 'name'), probe(list, w), probe(list, "
     "things.weak([1]))]",
     "['none', 'None', False, \"TypeError: 'NoneType' object is not iterable\", \"TypeError: 'NoneType' object is not "
     "iterable\"]"},
    {"MessagesNameWhatWasAsked",
     "w = things.weak(t)\nreturn [probe(ling.property_value, w, 'name'), probe(ling.bound_method, w, 'greet')]",
     "[\"RuntimeError: Property 'name' not found in: <ling.Weak>.\", \"RuntimeError: Method 'greet' not found in: "
     "<ling.Weak>.\"]"},
    {"DocOfFunction", "things.add.__doc__", "'(a: Integer, b: Integer) -> Integer\\n\\nAdds two numbers.'"},
    {"NameOfFunction", "things.add.__name__", "'add'"},
    {"ModuleOfClass", "things.Thing.__module__", "'things'"},
    {"TextSignature", "things.add.__text_signature__", "'(a: Integer, b: Integer) -> Integer'"},
    {"Conversions", "o = things.Odd()\nreturn [o.__code__, o.__bytes__, o.__bool__, t.__dir__[0]]",
     "['the code', b'odd', True, '_name']"},
    {"NoConversions", "[hasattr(t, n) for n in ('__code__', '__bytes__')]", "[False, False]"},
    {"Annotations", "sorted(things.add.__annotations__)", "['a', 'b', 'return']"},
    {"AnnotationTypes", "type(things.add.__annotations__['a'])", "<class 'type'>"},
    {"DirIsAList", "[n for n in t.__dir__ if n in ('mark', 'greet', 'size')]", "['mark', 'greet', 'size']"},
    {"DirShowsOwnMembers", "t.extra = 1\nreturn 'extra' in list(t.__dir__)", "true"},
    {"Positional", "things.add(2, 3)", "5"},
    {"Named", "things.add(b=2, a=3)", "5"},
    {"Mixed", "things.add(2, b=3)", "5"},
    {"Missing", "things.add(2)", "RuntimeError: Missing argument 'b' of 'add'."},
    {"UnknownName", "things.add(2, c=3)", "RuntimeError: Unknown argument 'c' of 'add'."},
    {"Repeated", "things.add(2, 3, a=3)", "RuntimeError: Repeated argument 'a' of 'add'."},
    {"Superfluous", "things.add(2, 3, 4)", "RuntimeError: Superfluous argument 4 of 'add': it takes 2, 3 were given."},
    {"MethodByName", "t.greet(whom='me')", "'box greets me'"},
    {"MethodSuperfluous", "t.greet('a', 'b')",
     "RuntimeError: Superfluous argument b of 'greet': it takes 1, 2 were given."},
    {"ClassMissing", "things.Thing()", "RuntimeError: Missing argument 'name' of 'Thing'."},
    {"EmptyName", "things.add(1, **{'': 2})", "RuntimeError: Unknown argument '' of 'add'."},
    {"NameThatIsNoText", "things.add(1, **{2: 2})", "RuntimeError: Argument names of 'add' must be text, not 2."},
    {"WrongType", "things.add('x', 3)",
     "RuntimeError: Argument 'a' of 'add' must be of type 'Integer', not 'ling.String'."},
    {"BigIntegerAsAnArgument", "things.add(2**64, 3)", "OverflowError: int too big to convert"},
    {"LoneSurrogate", "things.same('\\udc00')",
     "UnicodeEncodeError: 'utf-8' codec can't encode character '\\udc00' in position 0: surrogates not allowed"},
    {"NotCallable", "t()", "RuntimeError: Non-callable object: <things.Thing>"},
    {"PlainIsNotCallable", "callable(things.Bare())", "False"},
    {"KeepsIdentity", "x = object()\nreturn things.same(x) is x", "true"},
    {"ErrorClass", "try: things.refuse('no')\nexcept RuntimeError as e: return type(e).__name__ + str(e.ling is None)",
     "RefusalFalse"},
    {"Subtract", "t - 5", "'5'"},
    {"Divide", "things.Row() / 5", "(3, 5)"},
    {"HashOfMinusOne", "hash(things.Odd())", "-2"},
    {"SubtractMissing", "ling.List() - 5", "NotImplementedError: [ling_number_subtract] None method '__sub__' in: []"},
    {"DivideMissing", "t / 5", "NotImplementedError: [ling_number_divide] None method '__div__' in: <things.Thing>."},
    {"InplaceDivideMissing", "x = t\ntry: x /= 5\nexcept NotImplementedError as e: return str(e)",
     "[ling_number_divide] None method '__idiv__' in: <things.Thing>."},
    {"InplaceSubtractMissing", "x = t\ntry: x -= 5\nexcept NotImplementedError as e: return str(e)",
     "[ling_number_inplace_subtract] None method '__isub__' in: <things.Thing>"},
    {"ConcatFallback", "t + 5", "(5,)"},
    {"RepeatMissing", "t * 3", "NotImplementedError: [ling_sequence_repeat] None method 'repeat' in: <things.Thing>."},
    {"Reflected", "5 - t", "SystemError: error return without exception set"},
    {"Length", "len(ling.List([1, 2]))", "2"},
    {"LengthMissing", "len(t)", "RuntimeError: Property 'length' not found in: <things.Thing>."},
    {"Index", "ling.List([1, 2])[-1]", "2"},
    {"IndexPastTheEnd", "ling.List([1, 2, 3])[10]", "RuntimeError: Index out of range: 10."},
    {"IndexByText", "ling.List([1])['a']", "KeyError: 'a'"},
    {"MapKey", "ling.Map({'a': 1})['a']", "1"},
    {"MapMissingKey", "ling.Map({'a': 1})['b']", "KeyError: 'b'"},
    {"MapKeyOfEachKind",
     "m = ling.Map()\nkeys = [1, 2.5, True, None, b'x', 'x']\nfor k in keys: m[k] = [k]\n"
     "return [m[k] == [k] and k in m for k in keys] == [True] * 6",
     "true"},
    {"MapUnusableKey", "k = [1]\nm = ling.Map()\nm.set(k, 5)\nreturn [m.get(k), probe(lambda: m[k])]",
     "[5, \"KeyError: '[1]'\"]"},
    {"SubscriptOfNeither", "t[1]", "KeyError: '1'"},
    {"Store", "l = ling.List([1, 2])\nl[0] = 9\nreturn repr(l)", "[9, 2]"},
    {"Delete", "l = ling.List([1, 2])\ndel l[0]\nreturn repr(l)", "[2]"},
    {"MapStoreAndDelete", "m = ling.Map({})\nm['k'] = 1\nm['j'] = 2\ndel m['k']\nreturn repr(m)", "{'j': 2}"},
    {"Contains", "[2 in ling.List([1, 2]), 3 in ling.List([1, 2]), 'a' in ling.Map({'a': 1})]", "[True, False, True]"},
    {"ContainsMissing", "1 in t", "RuntimeError: Method 'contains' not found in: <things.Thing>."},
    {"InplaceConcatKeepsTheList", "l = m = ling.List([1])\nl += [2]\nreturn repr(m)", "[1, 2]"},
    {"Repeat", "ling.List([1, 2]) * 2", "[1, 2, 1, 2]"},
    {"BigIntegerInContains", "2**64 in ling.List([-1])", "OverflowError: int too big to convert"},
    {"ListToPython", "list(ling.List([1, 'a', None]))", "[1, 'a', None]"},
    {"Unpacking", "a, *b = ling.List([1, 2, 3])\nreturn repr((a, b))", "(1, [2, 3])"},
    {"MapIteratesKeys", "list(ling.Map({'a': 1, 'b': 2}))", "['a', 'b']"},
    {"FailingIteratorEndsQuietly", "list(things.failing(2))", "[2, 1]"},
    {"NotIterable", "iter(t)", "SystemError: <built-in function iter> returned NULL without setting an exception"},
    {"CompareWithInteger", "[ling.List([1]) == 5, ling.List([1]) != 5]", "[False, True]"},
    {"CompareLists", "[ling.List([1, 2]) == ling.List([1, 2]), ling.List([1]) < ling.List([2])]", "[True, True]"},
    {"PythonListIsAnotherValue", "ling.List([1]) == [1]", "False"},
    {"HashByIdentity", "a, b = ling.List(), ling.List()\nreturn hash(a) == hash(b)", "false"},
    {"NoLengthIsATypeErrorToo",
     "try: len(iter(ling.List()))\nexcept TypeError as e: return isinstance(e, RuntimeError)", "true"},
    {"HashByContent", "hash(ling.Date(2024, 1, 2)) == hash(ling.Date(2024, 1, 2))", "True"},
    {"Repr", "repr(ling.List([1, 'it', None, 2.5, b'x', True]))", "\"[1, 'it', None, 2.5, b'x', True]\""},
    {"Str", "str(ling.List([1, 'a']))", "\"[1, 'a']\""},
};
LING_TABLE(Wrapper, ThingsTest, kRows);

/// What Python code sees of a `ling` value: the outcome of an expression, exceptions with their whole text.
/// Members of an object itself may stand in for those of its class, so that a look-up goes another way as soon as there
/// is one.
TEST_P(Wrapper, BehavesAsAnObject) {
    for (const char* member : {"", "t.unrelated = 1\n"})
        EXPECT_EQ(outcome(std::string("t = things.Thing('box')\n") + member, GetParam()), GetParam().expected)
            << member;
}

class WrapperIdentity : public ThingsTest {};

TEST_F(WrapperIdentity, LookUpsLeaveNothingBehindOfNamesThatNobodyDeclared) {
    EXPECT_EQ(script("t = things.Thing('box')\nnames = ['undeclared%d' % n for n in range(4)]\n"
                     "return [hasattr(t, names[0]), hasattr(ling, names[1]), probe(delattr, t, names[2])[:14],"
                     " probe(ling.bound_method, {}, names[3])[:5]]"),
              "[False, False, 'AttributeError', 'Runti']");
    for (const char* name : {"undeclared0", "undeclared1", "undeclared2", "undeclared3"})
        EXPECT_EQ(internal::find_interned(std::string_view(name)), nullptr) << name;
}

}  // namespace
