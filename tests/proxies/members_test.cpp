#include "ling/members.h"

#include "bridge/convert.h"
#include "ling/ling.h"
#include "proxies/python_proxy.h"
#include "support/describe.h"
#include "support/python_test.h"

namespace {

constexpr const char* kClasses = R"(
import functools
class Plain:
    "A plain class."
    data = 7
    def __init__(self): self.own = []
    def method(self, a): return (a, len(self.own))
    @property
    def readable(self): return 'read'
    @property
    def writable(self): return self.own
    @writable.setter
    def writable(self, value): self.own = value
    @property
    def failing(self): raise OSError('the getter ran')
    @property
    def optional(self, more=2): return more
    no_getter = property()
    @functools.cached_property
    def cached(self): raise OSError('the getter ran')
    @classmethod
    def of_class(cls): return cls.__name__
class Derived(property): pass
class Special(Plain):
    derived = Derived(lambda self: 'derived', 5)
class Slots:
    __slots__ = ('a',)
class Refuses:
    def __getattr__(self, name): raise OSError(name)
    def __setattr__(self, name, value): raise ValueError('not ' + name)
class Answers:
    def __getattr__(self, name): return lambda *rest: (name, rest)
class WithLength(list):
    @property
    def length(self): return 'of Python'
    def at(self, index): return 'of Python'
class OnInstance:
    def __init__(self): self.held = property(lambda self: 'held')
)";

/// Looks at the members of Python objects as `ling` code does.
class ProxyMembers : public PythonTest {
protected:
    Any proxy(const char* expression) {
        GilGuard gil;
        define("proxy_members_test_classes", kClasses);
        PyRef object = eval(expression);
        return toLing(object.get());
    }
    Any nullProxy() { return PythonProxy::getClass().allocateInstance(); }
};

struct Row {
    const char* object;
    const char* name;
    const char* expected;
};

constexpr Row kMethods[] = {
    {"Plain()", "method", "FunctionPython"},
    {"Plain()", "of_class", "FunctionPython"},
    {"Plain()", "own", "none"},                   // Not callable.
    {"Plain()", "absent", "none"},                //
    {"Plain()", "", "none"},                      //
    {"Plain()", "failing", "none"},               // Reading it raises.
    {"Plain()", "__class__", "class Plain"},      // A class can be called.
    {"Refuses()", "anything", "none"},            //
    {"Answers()", "anything", "FunctionPython"},  //
    {"WithLength()", "at", "function"},           // What `ling` registered comes first.
    {"[]", "append", "function"},                 //
    {"[]", "sort", "FunctionPython"},             //
    {"{}", "items", "FunctionPython"},            //
    {"__import__('json')", "dumps", "FunctionPython"},
};

TEST_F(ProxyMembers, MethodsAreThoseOfLingThenCallableAttributes) {
    for (const Row& row : kMethods) {
        SCOPED_TRACE(std::string(row.object) + "." + row.name);
        const Any object = proxy(row.object);
        EXPECT_EQ(describe(method_of(object, method_ident_untyped(row.name))), row.expected);
    }
}

constexpr Row kProperties[] = {
    {"Plain()", "readable", "read-only"},
    {"Plain()", "writable", "writable"},
    {"Plain()", "failing", "read-only"},  // Not read by looking for it.
    {"Plain()", "no_getter", "none"},
    {"Plain()", "cached", "none"},
    {"Plain()", "data", "none"},
    {"Plain()", "own", "none"},
    {"Plain()", "method", "none"},
    {"Plain()", "absent", "none"},
    {"Special()", "derived", "read-only"},  // What is no function sets nothing.
    {"Special()", "writable", "writable"},
    {"OnInstance()", "held", "read-only"},
    {"Refuses()", "anything", "none"},
    {"Answers()", "anything", "none"},
    {"WithLength()", "length", "read-only"},
};

TEST_F(ProxyMembers, PropertiesAreThoseOfLingThenPropertyObjects) {
    for (const Row& row : kProperties) {
        SCOPED_TRACE(std::string(row.object) + "." + row.name);
        const Property property = property_of(proxy(row.object), property_ident_untyped(row.name));
        const char* found = property.isNone() ? "none" : property.setter().isNone() ? "read-only" : "writable";
        EXPECT_STREQ(found, row.expected);
    }
}

TEST_F(ProxyMembers, PropertiesReadAndWriteThroughPython) {
    const Any plain = proxy("Plain()");
    EXPECT_EQ(textOf(plain.propertyValue("readable")), "read");
    EXPECT_EQ(describe(plain.propertyValue("optional")), "integer 2");
    EXPECT_EQ(messageOf(plain.propertyValue("failing")), "the getter ran");
    EXPECT_TRUE(plain.setPropertyValue("writable", 5).isNone());
    EXPECT_EQ(describe(plain.propertyValue("writable")), "integer 5");
    EXPECT_EQ(messageOf(plain.setPropertyValue("readable", 5)), "The property is read-only.");
    EXPECT_EQ(describe(proxy("WithLength()").propertyValue(I_Sequence_Generic::$$length)), "integer 0");
}

TEST_F(ProxyMembers, ValuesArePutOnThePythonObject) {
    const Any plain = proxy("Plain()");
    EXPECT_TRUE(insert_property_value(plain, property_ident_untyped("colour"), String(u"red")).isNone());
    {
        GilGuard gil;
        PyRef object = PyRef::steal(toPython(plain));
        PyRef colour = PyRef::steal(PyObject_GetAttrString(object.get(), "colour"));
        EXPECT_STREQ(PyUnicode_AsUTF8(colour.get()), "red");
    }
    EXPECT_EQ(messageOf(insert_property_value(proxy("Slots()"), property_ident_untyped("b"), 1)),
              "'Slots' object has no attribute 'b' and no __dict__ for setting new attributes");
    EXPECT_EQ(messageOf(insert_property_value(proxy("Refuses()"), property_ident_untyped("b"), 1)), "not b");
    EXPECT_EQ(messageOf(insert_property_value(nullProxy(), property_ident_untyped("b"), 1)), "The object is null.");
    EXPECT_EQ(messageOf(insert_property_value(plain, property_ident_untyped("b"), Error(u"no", true))), "no");
    internal::property_builder_base computed;
    computed.assign_getter(make_function("f", "", [] { return 1; }));
    EXPECT_EQ(messageOf(insert_property(plain, property_ident_untyped("b"), computed.build())),
              "Unable to insert non-value property to a python object, use 'raw_insert_property' instead.");
    EXPECT_TRUE(raw_insert_property(plain, property_ident_untyped("b"), computed.build()).isNone());
    EXPECT_EQ(describe(plain.propertyValue("b")), "integer 1");
}

TEST_F(ProxyMembers, AMethodThatWantsAReceiverGetsTheProxy) {
    const Any plain = proxy("Plain()");
    const auto own = make_method("own", "more", [](const Any& self, std::int64_t more) {
        return Tuple_Generic({display(self.callMethod("of_class")), more});
    });
    const auto none = make_function("none", "", [] { return 9; });
    const auto independent = make_function("independent", "a", [](const Any& a) { return a; });
    EXPECT_TRUE(insert_method(plain, method_ident_untyped("own_method"), own).isNone());
    EXPECT_TRUE(insert_method(plain, method_ident_untyped("no_parameters"), none).isNone());
    EXPECT_TRUE(insert_method(plain, method_ident_untyped("independent"), independent).isNone());
    EXPECT_EQ(messageOf(insert_method(proxy("Slots()"), method_ident_untyped("b"), none)),
              "'Slots' object has no attribute 'b' and no __dict__ for setting new attributes");
    EXPECT_EQ(messageOf(insert_method(nullProxy(), method_ident_untyped("b"), none)), "The object is null.");
    GilGuard gil;
    PyRef object = PyRef::steal(toPython(plain));
    run("def calls(x): return repr((x.own_method(4), x.no_parameters(), x.independent('a')))");
    PyRef calls = eval("calls");
    PyRef shown = PyRef::steal(PyObject_CallOneArg(calls.get(), object.get()));
    ASSERT_TRUE(shown) << takePending();
    EXPECT_STREQ(PyUnicode_AsUTF8(shown.get()), "(('Plain', 4), 9, 'a')");
    PyObject_DelAttrString(object.get(), "own_method");  // The object holds it, and it holds the object.
}

TEST_F(ProxyMembers, AProxyWithoutAnObjectHasOnlyWhatLingRegistered) {
    const Any empty = nullProxy();
    EXPECT_TRUE(method_of(empty, method_ident_untyped("append")).isNone());
    EXPECT_TRUE(property_of(empty, property_ident_untyped("append")).isNone());
    EXPECT_EQ(display(empty), u"");
    EXPECT_EQ(compare_objects(empty, empty), 0);
}

}  // namespace
