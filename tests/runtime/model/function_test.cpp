#include "ling/ling.h"

#include <gtest/gtest.h>

namespace ling {
namespace {

String textOf(const Any& value) {
    if (Result<Error> error = Error::cast(value))
        return u"error: " + error->message();
    return display(value);
}

FunctionCL_Generic describe() {
    FunctionCL_Generic function = make_function(
        "describe", "name, count, factor",
        [](const String& name, std::int64_t count, double factor) {
            return String(u"{} {} {}").arg(name, count, factor);
        },
        "Describes.");
    function.setParameterDefaults({Any(2), Any(0.5)});
    return function;
}

struct PositionCase {
    const char* name;
    std::vector<Any> arguments;
    const char16_t* outcome;
};

class CallByPosition : public ::testing::TestWithParam<PositionCase> {};

TEST_P(CallByPosition, ChecksAndFillsArguments) {
    EXPECT_EQ(textOf(describe().invoke(GetParam().arguments)), GetParam().outcome);
    EXPECT_EQ(textOf(describe().invokeWith(List_Generic(GetParam().arguments))), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CallByPosition,
    ::testing::Values(
        PositionCase{"All", {String(u"x"), 1, 1.5}, u"x 1 1.5"}, PositionCase{"Defaults", {String(u"x")}, u"x 2 0.5"},
        PositionCase{"IntegerForFloat", {String(u"x"), 1, 3}, u"x 1 3.0"},
        PositionCase{"Missing", {}, u"error: Missing argument 'name' of 'describe'."},
        PositionCase{"Superfluous",
                     {String(u"x"), 1, 1.5, String(u"y")},
                     u"error: Superfluous argument y of 'describe': it takes 3, 4 were given."},
        PositionCase{"WrongType",
                     {String(u"x"), String(u"many")},
                     u"error: Argument 'count' of 'describe' must be of type 'Integer', not 'ling.String'."},
        PositionCase{"BooleanIsNoInteger",
                     {String(u"x"), true},
                     u"error: Argument 'count' of 'describe' must be of type 'Integer', not 'ling.Boolean'."}),
    [](const auto& row) { return row.param.name; });

struct NameCase {
    const char* name;
    std::vector<Any> positional;
    std::vector<std::pair<Any, Any>> named;
    const char16_t* outcome;
};

class CallByName : public ::testing::TestWithParam<NameCase> {};

TEST_P(CallByName, GivesEachNameItsPlace) {
    EXPECT_EQ(textOf(describe().invokeWith(GetParam().positional, Map_Generic(GetParam().named))), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CallByName,
    ::testing::Values(
        NameCase{"AnyOrder", {}, {{String(u"factor"), 1.5}, {String(u"name"), String(u"x")}}, u"x 2 1.5"},
        NameCase{"Mixed", {String(u"x")}, {{String(u"count"), 7}}, u"x 7 0.5"},
        NameCase{"Nothing", {}, {}, u"error: Missing argument 'name' of 'describe'."},
        NameCase{"Unknown", {String(u"x")}, {{String(u"size"), 7}}, u"error: Unknown argument 'size' of 'describe'."},
        NameCase{"Repeated",
                 {String(u"x")},
                 {{String(u"name"), String(u"y")}},
                 u"error: Repeated argument 'name' of 'describe'."},
        NameCase{
            "KeyIsNoText", {String(u"x")}, {{Any(1), 7}}, u"error: Argument names of 'describe' must be text, not 1."},
        NameCase{"TooManyPositions",
                 {String(u"x"), 1, 2.5, 3},
                 {},
                 u"error: Superfluous argument 3 of 'describe': it takes 3, 4 were given."}),
    [](const auto& row) { return row.param.name; });

/// Answers the arguments that it was called with, one for each parameter and then the rest.
class Shown final : public internal::object_value_native_function {
public:
    Shown()
        : object_value_native_function(
              u"shown",
              Signature({Parameter(u"a", Type(), ParameterMode::PositionalOnly), Parameter(u"b"),
                         Parameter(u"rest", Type(), ParameterMode::VariadicPositional),
                         Parameter(u"c", Type(), ParameterMode::NameOnly),
                         Parameter(u"d", Type(), ParameterMode::NameOnly, 4),
                         Parameter(u"more", Type(), ParameterMode::VariadicNamed)},
                        Type()),
              String(), true) {}

protected:
    Any call(std::span<const Any> arguments) override {
        return List_Generic(std::vector<Any>(arguments.begin(), arguments.end()));
    }
};

const struct {
    std::vector<int> positional;
    std::vector<std::pair<const char16_t*, int>> named;
    const char16_t* outcome;
} kEveryMode[] = {
    {{1, 2}, {{u"c", 3}}, u"[1, 2, 3, 4, {}]"},
    {{1}, {{u"d", 5}, {u"c", 3}, {u"b", 2}}, u"[1, 2, 3, 5, {}]"},
    {{1, 2, 6, 7}, {{u"c", 3}}, u"[1, 2, 3, 4, {}, 6, 7]"},
    {{1, 2, 6}, {{u"c", 3}, {u"x", 8}, {u"a", 9}}, u"[1, 2, 3, 4, {'x': 8, 'a': 9}, 6]"},
    {{1, 2}, {}, u"error: Missing argument 'c' of 'shown'."},
    {{}, {{u"a", 1}, {u"b", 2}, {u"c", 3}}, u"error: Missing argument 'a' of 'shown'."},
    {{1, 2, 6}, {{u"c", 3}, {u"b", 5}}, u"error: Repeated argument 'b' of 'shown'."},
    {{1, 2}, {{u"c", 3}, {u"c", 4}}, u"error: Repeated argument 'c' of 'shown'."},
    {{1, 2}, {{u"c", 3}, {u"x", 4}, {u"x", 5}}, u"error: Repeated argument 'x' of 'shown'."},
};

TEST(Function, EveryModeOfParameterGetsItsArguments) {
    const FunctionCL_Generic shown = FunctionCL_Generic::adopt(new Shown);
    for (const auto& row : kEveryMode) {
        SCOPED_TRACE(String(row.outcome).toStdString());
        const std::vector<Any> positional(row.positional.begin(), row.positional.end());
        std::vector<NamedArgument> named;
        for (const auto& [name, value] : row.named)
            named.push_back({name, value});
        EXPECT_EQ(textOf(shown.invokeWith(positional, named)), row.outcome);
        if (positional.empty())
            continue;
        const I_Invokable_Generic bound = shown.bindArgs(positional.front());
        EXPECT_EQ(textOf(bound.invokeWith(std::span(positional).subspan(1), named)), row.outcome);
    }
    EXPECT_TRUE(shown.setParameterDefaults({7}).isNone());
    EXPECT_EQ(shown.signature()->toString(), u"(a, /, b=7, *rest, c, d=4, **more)");
    EXPECT_EQ(textOf(shown.propertyValue(I_Invokable_Generic::$$defaults)), u"[7]");
    EXPECT_EQ(shown.bindArgs(1, 2, 6).signature()->toString(), u"(*rest, c, d=4, **more)");
}

TEST(Function, AClassBindsTheNamesOfItsInitialiser) {
    const field_ident_untyped $given("given");
    const auto initialise = [&](const Any& self, const Any& a, const Any& b) {
        return self.setFieldValue($given, Tuple_Generic({a, b}));
    };
    const Class_Generic cls =
        internal::defclass_impl("Named", "").field($given).method(Any::$__init__, "a, b", initialise).build();
    const Any one[] = {1};
    const NamedArgument named[] = {{u"b", 2}};
    EXPECT_EQ(textOf(cls.invokeWith(one, named).fieldValue($given)), u"(1, 2)");
    EXPECT_EQ(textOf(cls.invokeWith({}, named)), u"error: Missing argument 'a' of 'Named'.");
    const Class_Generic shown =
        internal::defclass_impl("ShownClass", "").method(Any::$__init__, FunctionCL_Generic::adopt(new Shown)).build();
    const NamedArgument alone[] = {{u"c", 2}};
    EXPECT_FALSE(internal::is_error_result(shown.invokeWith(one, alone)));
}

TEST(Function, TwoBindingsOfOneMethodToOneObjectAreEqual) {
    const FunctionCL_Generic method = make_method("m", "a", [](const Any& self, const Any&) { return self; });
    const List_Generic one;
    const List_Generic other;
    const auto same = [](const Any& a, const Any& b) {
        EXPECT_EQ(compare_objects(a, b), -compare_objects(b, a));
        EXPECT_TRUE(compare_objects(a, b) != 0 || hash_of(a) == hash_of(b));
        return compare_objects(a, b) == 0;
    };
    EXPECT_TRUE(same(method.bindArgs(one), method.bindArgs(one)));
    EXPECT_TRUE(same(method.bindArgs(one, 5), method.bindArgs(one, 5)));
    EXPECT_FALSE(same(method.bindArgs(one), method.bindArgs(other)));  // Equal lists, but two.
    EXPECT_FALSE(same(method.bindArgs(one), method.bindArgs(one, 5)));
    EXPECT_FALSE(same(method.bindArgs(5), method.bindArgs(6)));
    EXPECT_FALSE(same(method, method.bindArgs(one)));
    EXPECT_FALSE(same(describe(), describe()));
}

TEST(Function, RestParametersTakeWhatRemains) {
    const auto join =
        make_function("join", "separator, parts", [](const String& separator, std::span<const Any> parts) {
            string_builder text;
            for (const Any& part : parts)
                text.append(text.length() == 0 ? String() : separator).append(display(part));
            return text.build();
        });
    EXPECT_EQ(textOf(join(u"-", 1, 2, 3)), u"1-2-3");
    EXPECT_EQ(textOf(join(u"-")), u"");
    EXPECT_EQ(textOf(join()), u"error: Missing argument 'separator' of 'join'.");
    EXPECT_EQ(join.signature()->toString(), u"(separator: String, *parts) -> String");
}

TEST(Function, BoundArgumentsGoInFrontAndLeaveTheSignature) {
    const I_Invokable_Generic bound = describe().bindArgs(u"x");
    EXPECT_EQ(textOf(bound()), u"x 2 0.5");
    EXPECT_EQ(textOf(bound.bindArgs(9)(2.5)), u"x 9 2.5");
    EXPECT_EQ(bound.signature()->toString(), u"(count: Integer = 2, factor: Float = 0.5) -> String");
    EXPECT_EQ(bound.parameterCount(), 2);
    EXPECT_TRUE(bound.isIndependent());
    const std::vector<Any> many(20, Any(1));
    const auto count = make_function("count", "all", [](std::span<const Any> all) { return all.size(); });
    EXPECT_EQ(textOf(count.bindArgsImpl(many).invoke(many)), u"40");
}

TEST(Function, DefaultsBelongToTheLastParametersAndCanBeReplaced) {
    const FunctionCL_Generic function = describe();
    EXPECT_TRUE(function.setParameterDefaults({Any(8.5)}).isNone());
    EXPECT_EQ(textOf(function(u"x")), u"x 2 8.5");
    EXPECT_EQ(textOf(function.setParameterDefaults({1, 2, 3, 4})),
              u"error: Too many defaults for 'describe': 4 for 3 parameters.");
    EXPECT_EQ(textOf(function.propertyValue(I_Invokable_Generic::$$defaults)), u"[2, 8.5]");
}

TEST(Function, DescribesItself) {
    const FunctionCL_Generic function = describe();
    EXPECT_EQ(function.signature()->toString(), u"(name: String, count: Integer = 2, factor: Float = 0.5) -> String");
    EXPECT_EQ(function.signature()->toString(17), u"(name: String, count: Integer, factor: Float) -> String");
    EXPECT_EQ(function.resultType(), String::getType());
    EXPECT_EQ(textOf(function.propertyValue(I_HasDoc::$$doc)), u"Describes.");
    EXPECT_EQ(textOf(function.propertyValue(I_HasName::$$name)), u"describe");
    EXPECT_EQ(textOf(function.propertyValue(I_Invokable_Generic::$$parameterCount)), u"3");
    const FunctionCL_Generic method = make_method("m", "a", [](const Any& self, const Any&) { return self; });
    EXPECT_FALSE(method.isIndependent());
    EXPECT_EQ(method.signature()->toString(), u"(self, a)");
}

TEST(Function, NamesTheFirstClassThatDeclaresItWhileThatLives) {
    const FunctionCL_Generic method = make_method("shared", "", [](const Any&) { return 1; });
    const auto owner = [&] { return Any(method).propertyValue(I_Invokable_Generic::$$definingClass); };
    const method_ident_untyped $shared("shared");
    EXPECT_TRUE(owner().isNone());
    {
        const Class_Generic first = internal::defclass_impl("First", "").method($shared, method).build();
        const Class_Generic second = internal::defclass_impl("Second", "").method($shared, method).build();
        EXPECT_TRUE(owner().isSameAs(first));
    }
    EXPECT_TRUE(owner().isNone()) << "The class is gone.";
    const Class_Generic third = internal::defclass_impl("Third", "").method($shared, method).build();
    EXPECT_TRUE(owner().isSameAs(third));
}

TEST(Function, SignatureTextShowsHowArgumentsArePassed) {
    const Type any;
    const Signature signature(
        {Parameter(u"a", any, ParameterMode::PositionalOnly), Parameter(u"b", any, ParameterMode::Ordinary, String()),
         Parameter(u"c", any, ParameterMode::NameOnly, Any()), Parameter(u"rest", any, ParameterMode::VariadicNamed)},
        any);
    EXPECT_EQ(signature.toString(), u"(a, /, b='', *, c=none, **rest)");
}

TEST(Function, ObjectsWithAnInvokeMethodAreCalled) {
    const Class_Generic cls = internal::defclass_impl("Adder", "")
                                  .parent(I_Invokable_Generic::getClass())
                                  .method(I_Invokable_Generic::$invoke, "arguments",
                                          [](const Any&, const List_Generic& all) { return all.size(); })
                                  .build();
    Result<I_Invokable_Generic> adder = I_Invokable_Generic::cast(cls.allocateInstance());
    ASSERT_TRUE(adder);
    EXPECT_EQ(textOf((*adder)(1, 2, 3)), u"3");
    EXPECT_FALSE(I_Invokable_Generic::cast(Any(1)));
    EXPECT_EQ(textOf(unchecked<I_Invokable_Generic>(List_Generic::empty())()),
              u"error: The value is not callable: [].");
}

TEST(Property, RefusesFunctionsWithTooManyParameters) {
    static std::vector<String> log;
    log.clear();
    internal::set_assertion_log([](const String& line) { log.push_back(line); });
    internal::property_builder_base builder;
    builder.assign_getter(make_function("get", "a", [](const Any& a) { return a; }));
    builder.assign_setter(make_method("set", "a, b", [](const Any&, const Any&, const Any&) {}));
    internal::set_assertion_log(nullptr);
    EXPECT_EQ(log, (std::vector<String>{u"[property_builder::getter] Too many parameters in the getter function.",
                                        u"[property_builder::setter] Too many parameters in the setter function."}));
    log.clear();
}

TEST(Property, ReadsWritesAndTellsWhatItIs) {
    const Property fixed = Property::ofValue(Any(4), u"Four.");
    EXPECT_TRUE(fixed.isValue());
    EXPECT_TRUE(fixed.isIndependent());
    EXPECT_EQ(textOf(fixed.getter()()), u"4");
    EXPECT_TRUE(fixed.setter().isNone());
    EXPECT_EQ(fixed.doc(), u"Four.");
    EXPECT_EQ(textOf(fixed.set(Any(), Any(5))), u"error: The property is read-only.");
}

struct TypeCase {
    const char* name;
    Type narrow;
    Type wide;
    bool specializes;
};

class TypeOrder : public ::testing::TestWithParam<TypeCase> {};

TEST_P(TypeOrder, Specializes) { EXPECT_EQ(GetParam().narrow.specializes(GetParam().wide), GetParam().specializes); }

const Type kOption = internal::type_unite(String::getType(), None::getType());

INSTANTIATE_TEST_SUITE_P(
    Rows, TypeOrder,
    ::testing::Values(TypeCase{"EverythingIsAny", kOption, Any::getType(), true},
                      TypeCase{"AnyIsNothingNarrower", Any::getType(), String::getType(), false},
                      TypeCase{"AncestorIsWider", StopIteration::getType(), Error::getType(), true},
                      TypeCase{"DescendantIsNarrower", Error::getType(), StopIteration::getType(), false},
                      TypeCase{"PartOfUnion", String::getType(), kOption, true},
                      TypeCase{"UnionNeedsEveryPart", kOption, String::getType(), false},
                      TypeCase{"UnionInUnion", kOption,
                               internal::type_unite(None::getType(),
                                                    internal::type_unite(Integer::getType(), String::getType())),
                               true},
                      TypeCase{"ListIsSequence", Type(List_Generic::genericInstance(String::getType())),
                               I_Sequence<String>::getType(), true},
                      TypeCase{"ParametersVary", Type(List_Generic::genericInstance(StopIteration::getType())),
                               I_Iterable<Error>::getType(), true},
                      TypeCase{"ParametersDiffer", Type(List_Generic::genericInstance(String::getType())),
                               I_Iterable<Integer>::getType(), false},
                      TypeCase{"VariableByItsBound", TypeVariable(u"T", Integer::getType()), Integer::getType(), true}),
    [](const auto& row) { return row.param.name; });

TEST(Type, UnionsAreFlatAndEqualWhateverTheirOrder) {
    const Type a = internal::type_unite(None::getType(), internal::type_unite(Integer::getType(), String::getType()));
    const Type b = internal::type_unite(internal::type_unite(String::getType(), None::getType()), Integer::getType());
    EXPECT_EQ(a, b);
    EXPECT_EQ(a.toString(), u"Integer|String|None");
    EXPECT_EQ(internal::type_unite(String::getType(), String::getType()), String::getType());
    EXPECT_TRUE(kOption.isOption());
    EXPECT_EQ(kOption.toString(), u"Option<String>");
    EXPECT_EQ(kOption.toClass(), String::getClass());
    EXPECT_TRUE(a.toClass().isNone());
    EXPECT_FALSE(a.isOption());
}

TEST(Type, EqualOnesHashAndOrderAlike) {
    const auto unite = [](const Type& a, const Type& b) { return internal::type_unite(a, b); };
    const Type one = unite(Integer::getType(), String::getType());
    const Type same = unite(String::getType(), Integer::getType());
    const Type other = unite(Integer::getType(), None::getType());
    ASSERT_TRUE(one == same);
    EXPECT_EQ(hash_of(one), hash_of(same));
    for (const Type& wide : {other, Integer::getType(), String::getType()})
        EXPECT_EQ(compare_objects(one, wide) < 0, compare_objects(same, wide) < 0) << wide.toString().toStdString();
    Map_Generic map;
    (void)map.set(one, 1);
    EXPECT_EQ(display(map.get(same)), u"1");
}

TEST(Type, MatchesValues) {
    EXPECT_TRUE(kOption.isMatch(Any()));
    EXPECT_TRUE(kOption.isMatch(String(u"x")));
    EXPECT_FALSE(kOption.isMatch(Any(1)));
    EXPECT_TRUE(Type().isMatch(Undefined()));
    EXPECT_TRUE(I_Sequence<String>::getType().isMatch(List_Generic::empty()));
    EXPECT_FALSE((I_Map<String, Any>::getType().isMatch(List_Generic::empty())));
}

}  // namespace
}  // namespace ling
