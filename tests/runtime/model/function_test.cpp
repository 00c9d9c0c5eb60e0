#include "runtime/support/values.h"

namespace ling::testing {
namespace {

FunctionCL_Generic describe() {
    FunctionCL_Generic function = make_function(
        "describe", "name, count, factor",
        [](const String& name, std::int64_t count, double factor) {
            return String("{} {} {}").arg(name, count, factor);
        },
        "Describes.");
    function.setParameterDefaults({Any(2), Any(0.5)});
    return function;
}

const struct CallCase {
    const char* name;
    std::vector<Any> positional;
    std::vector<std::pair<Any, Any>> named;
    const char* outcome;
} kCalls[] = {
    {"All", {"x", 1, 1.5}, {}, "x 1 1.5"},
    {"Defaults", {"x"}, {}, "x 2 0.5"},
    {"IntegerForFloat", {"x", 1, 3}, {}, "x 1 3.0"},
    {"Missing", {}, {}, "error: Missing argument 'name' of 'describe'."},
    {"Superfluous", {"x", 1, 1.5, "y"}, {}, "error: Superfluous argument y of 'describe': it takes 3, 4 were given."},
    {"BooleanIsNoInteger",
     {"x", true},
     {},
     "error: Argument 'count' of 'describe' must be of type 'Integer', not 'ling.Boolean'."},
    {"ByName", {}, {{"factor", 1.5}, {"name", "x"}}, "x 2 1.5"},
    {"Mixed", {"x"}, {{"count", 7}}, "x 7 0.5"},
    {"Unknown", {"x"}, {{"size", 7}}, "error: Unknown argument 'size' of 'describe'."},
    {"Repeated", {"x"}, {{"name", "y"}}, "error: Repeated argument 'name' of 'describe'."},
    {"KeyIsNoText", {"x"}, {{Any(1), 7}}, "error: Argument names of 'describe' must be text, not 1."},
};
LING_TABLE(Call, ::testing::Test, kCalls);

TEST_P(Call, ChecksAndFillsArguments) {
    const CallCase& row = GetParam();
    EXPECT_EQ(shown(describe().invokeWith(row.positional, Map_Generic(row.named))), row.outcome);
    if (row.named.empty()) {
        EXPECT_EQ(shown(describe().invoke(row.positional)), row.outcome);
        EXPECT_EQ(shown(describe().invokeWith(List_Generic(row.positional))), row.outcome);
    }
}

/// Answers the arguments that it was called with, one for each parameter and then the rest.
class Shown final : public object_value_native_function {
public:
    Shown()
        : object_value_native_function("shown",
                                       Signature({Parameter("a", Type(), ParameterMode::PositionalOnly), Parameter("b"),
                                                  Parameter("rest", Type(), ParameterMode::VariadicPositional),
                                                  Parameter("c", Type(), ParameterMode::NameOnly),
                                                  Parameter("d", Type(), ParameterMode::NameOnly, 4),
                                                  Parameter("more", Type(), ParameterMode::VariadicNamed)},
                                                 Type()),
                                       String(), true) {}

protected:
    Any call(std::span<const Any> arguments) override {
        return List_Generic(std::vector<Any>(arguments.begin(), arguments.end()));
    }
};

const struct {
    std::vector<int> positional;
    std::vector<std::pair<const char*, int>> named;
    const char* outcome;
} kEveryMode[] = {
    {{1, 2}, {{"c", 3}}, "[1, 2, 3, 4, {}]"},
    {{1}, {{"d", 5}, {"c", 3}, {"b", 2}}, "[1, 2, 3, 5, {}]"},
    {{1, 2, 6, 7}, {{"c", 3}}, "[1, 2, 3, 4, {}, 6, 7]"},
    {{1, 2, 6}, {{"c", 3}, {"x", 8}, {"a", 9}}, "[1, 2, 3, 4, {'x': 8, 'a': 9}, 6]"},
    {{1, 2}, {}, "error: Missing argument 'c' of 'shown'."},
    {{}, {{"a", 1}, {"b", 2}, {"c", 3}}, "error: Missing argument 'a' of 'shown'."},
    {{1, 2, 6}, {{"c", 3}, {"b", 5}}, "error: Repeated argument 'b' of 'shown'."},
    {{1, 2}, {{"c", 3}, {"c", 4}}, "error: Repeated argument 'c' of 'shown'."},
    {{1, 2}, {{"c", 3}, {"x", 4}, {"x", 5}}, "error: Repeated argument 'x' of 'shown'."},
};

TEST(Function, EveryModeOfParameterGetsItsArguments) {
    const FunctionCL_Generic every = FunctionCL_Generic::adopt(new Shown);
    for (const auto& row : kEveryMode) {
        SCOPED_TRACE(String(row.outcome).toStdString());
        const std::vector<Any> positional(row.positional.begin(), row.positional.end());
        std::vector<NamedArgument> named;
        for (const auto& [name, value] : row.named)
            named.push_back({name, value});
        EXPECT_EQ(shown(every.invokeWith(positional, named)), row.outcome);
        if (positional.empty())
            continue;
        const I_Invokable_Generic bound = every.bindArgs(positional.front());
        EXPECT_EQ(shown(bound.invokeWith(std::span(positional).subspan(1), named)), row.outcome);
    }
    EXPECT_TRUE(every.setParameterDefaults({7}).isNone());
    EXPECT_EQ(every.signature()->toString(), "(a, /, b=7, *rest, c, d=4, **more)");
    EXPECT_EQ(shown(every.propertyValue(I_Invokable_Generic::$$defaults)), "[7]");
    EXPECT_EQ(every.bindArgs(1, 2, 6).signature()->toString(), "(*rest, c, d=4, **more)");
    const auto strict = make_function("strict", {"a", "*", {"b", 2}}, [](long a, long b) { return a * 10 + b; });
    EXPECT_EQ(shown(strict(1)), "12");
    EXPECT_EQ(shown(strict(1, 3)), "error: Superfluous argument 3 of 'strict': it takes 1, 2 were given.");
}

TEST(Function, AClassBindsTheNamesOfItsInitialiser) {
    const field_ident_untyped $given("given");
    const auto initialise = [&](const Any& self, const Any& a, const Any& b) {
        return self.setFieldValue($given, Tuple_Generic({a, b}));
    };
    const Class_Generic cls =
        defclass_impl("Named", "").field($given).method(Any::$__init__, "a, b", initialise).build();
    const Any one[] = {1};
    const NamedArgument named[] = {{"b", 2}};
    EXPECT_EQ(shown(cls.invokeWith(one, named).fieldValue($given)), "(1, 2)");
    EXPECT_EQ(shown(cls.invokeWith({}, named)), "error: Missing argument 'a' of 'Named'.");
    const Class_Generic every =
        defclass_impl("ShownClass", "").method(Any::$__init__, FunctionCL_Generic::adopt(new Shown)).build();
    const NamedArgument alone[] = {{"c", 2}};
    EXPECT_FALSE(is_error_result(every.invokeWith(one, alone)));
    const Class_Generic item =
        defclass_impl("Item", "")
            .method(Any::$__init__, make_method("__init__", "*, price", [](const Any&, const Any&) { return Any(); }))
            .build();
    EXPECT_EQ(shown(item()), "error: Missing argument 'price' of 'Item'.");
    EXPECT_EQ(shown(item(1)), "error: Superfluous argument 1 of 'Item': it takes 0, 1 were given.");
    EXPECT_EQ(shown(item.invokeWith({}, alone)), "error: Unknown argument 'c' of 'Item'.");
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

TEST(Function, BoundArgumentsGoInFrontAndLeaveTheSignature) {
    const I_Invokable_Generic bound = describe().bindArgs("x");
    EXPECT_EQ(shown(bound()), "x 2 0.5");
    EXPECT_EQ(shown(bound.bindArgs(9)(2.5)), "x 9 2.5");
    EXPECT_EQ(bound.signature()->toString(), "(count: Integer = 2, factor: Float = 0.5) -> String");
    EXPECT_EQ(bound.parameterCount(), 2);
    EXPECT_EQ(describe().signature()->toString(17), "(name: String, count: Integer, factor: Float) -> String");
    EXPECT_EQ(shown(describe().propertyValue(I_HasDoc::$$doc)), "Describes.");
    const FunctionCL_Generic method = make_method("m", "a", [](const Any& self, const Any&) { return self; });
    EXPECT_FALSE(method.isIndependent());
    EXPECT_EQ(method.signature()->toString(), "(self, a)");
    EXPECT_TRUE(bound.isIndependent());
    const std::vector<Any> many(20, Any(1));
    const auto count = make_function("count", "all", [](std::span<const Any> all) { return all.size(); });
    EXPECT_EQ(shown(count.bindArgsImpl(many).invoke(many)), "40");
}

TEST(Function, DefaultsBelongToTheLastParametersAndCanBeReplaced) {
    const FunctionCL_Generic function = describe();
    EXPECT_TRUE(function.setParameterDefaults({Any(8.5)}).isNone());
    EXPECT_EQ(shown(function("x")), "x 2 8.5");
    EXPECT_EQ(shown(function.setParameterDefaults({1, 2, 3, 4})),
              "error: Too many defaults for 'describe': 4 for 3 parameters.");
    EXPECT_EQ(shown(function.propertyValue(I_Invokable_Generic::$$defaults)), "[2, 8.5]");
}

TEST(Function, NamesTheFirstClassThatDeclaresItWhileThatLives) {
    const FunctionCL_Generic method = make_method("shared", "", [](const Any&) { return 1; });
    const auto owner = [&] { return Any(method).propertyValue(I_Invokable_Generic::$$definingClass); };
    const method_ident_untyped $shared("shared");
    EXPECT_TRUE(owner().isNone());
    {
        const Class_Generic first = defclass_impl("First", "").method($shared, method).build();
        const Class_Generic second = defclass_impl("Second", "").method($shared, method).build();
        EXPECT_TRUE(owner().isSameAs(first));
    }
    EXPECT_TRUE(owner().isNone()) << "The class is gone.";
    const Class_Generic third = defclass_impl("Third", "").method($shared, method).build();
    EXPECT_TRUE(owner().isSameAs(third));
}

TEST(Function, ObjectsWithAnInvokeMethodAreCalled) {
    const Class_Generic cls = defclass_impl("Adder", "")
                                  .parent(I_Invokable_Generic::getClass())
                                  .method(I_Invokable_Generic::$invoke, "arguments",
                                          [](const Any&, const List_Generic& all) { return all.size(); })
                                  .build();
    Result<I_Invokable_Generic> adder = I_Invokable_Generic::cast(cls.allocateInstance());
    ASSERT_TRUE(adder);
    EXPECT_EQ(shown((*adder)(1, 2, 3)), "3");
    EXPECT_FALSE(I_Invokable_Generic::cast(Any(1)));
    EXPECT_EQ(shown(unchecked<I_Invokable_Generic>(List_Generic::empty())()), "error: The value is not callable: [].");
}

const Type kOption = type_unite(String::getType(), None::getType());

const struct TypeCase {
    const char* name;
    Type narrow;
    Type wide;
    bool specializes;
} kTypes[] = {
    {"EverythingIsAny", kOption, Any::getType(), true},
    {"AnyIsNothingNarrower", Any::getType(), String::getType(), false},
    {"AncestorIsWider", StopIteration::getType(), Error::getType(), true},
    {"DescendantIsNarrower", Error::getType(), StopIteration::getType(), false},
    {"PartOfUnion", String::getType(), kOption, true},
    {"UnionNeedsEveryPart", kOption, String::getType(), false},
    {"UnionInUnion", kOption, type_unite(Integer::getType(), kOption), true},
    {"ListIsSequence", List<String>::getType(), I_Sequence<String>::getType(), true},
    {"ParametersVary", List<StopIteration>::getType(), I_Iterable<Error>::getType(), true},
    {"ParametersDiffer", List<String>::getType(), I_Iterable<Integer>::getType(), false},
    {"VariableByItsBound", TypeVariable("T", Integer::getType()), Integer::getType(), true},
};
LING_TABLE(TypeOrder, ::testing::Test, kTypes);

TEST_P(TypeOrder, Specializes) { EXPECT_EQ(GetParam().narrow.specializes(GetParam().wide), GetParam().specializes); }

TEST(Type, UnionsAreFlatAndEqualWhateverTheirOrder) {
    const Type a = type_unite(None::getType(), type_unite(Integer::getType(), String::getType()));
    const Type b = type_unite(type_unite(String::getType(), None::getType()), Integer::getType());
    EXPECT_EQ(a, b);
    EXPECT_EQ(a.toString(), "Integer|String|None");
    EXPECT_EQ(type_unite(String::getType(), String::getType()), String::getType());
    EXPECT_TRUE(kOption.isOption());
    EXPECT_EQ(kOption.toString(), "Option<String>");
    EXPECT_EQ(kOption.toClass(), String::getClass());
    EXPECT_TRUE(a.toClass().isNone());
    EXPECT_FALSE(a.isOption());
}

TEST(Type, EqualOnesHashAndOrderAlike) {
    const auto unite = [](const Type& a, const Type& b) { return type_unite(a, b); };
    const Type one = unite(Integer::getType(), String::getType());
    const Type same = unite(String::getType(), Integer::getType());
    const Type other = unite(Integer::getType(), None::getType());
    ASSERT_TRUE(one == same);
    EXPECT_EQ(hash_of(one), hash_of(same));
    for (const Type& wide : {other, Integer::getType(), String::getType()})
        EXPECT_EQ(compare_objects(one, wide) < 0, compare_objects(same, wide) < 0) << wide.toString().toStdString();
    Map_Generic map;
    (void)map.set(one, 1);
    EXPECT_EQ(display(map.get(same)), "1");
}

TEST(Type, MatchesValues) {
    EXPECT_TRUE(kOption.isMatch(Any()));
    EXPECT_TRUE(kOption.isMatch(String("x")));
    EXPECT_FALSE(kOption.isMatch(Any(1)));
    EXPECT_TRUE(Type().isMatch(Undefined()));
    EXPECT_TRUE(I_Sequence<String>::getType().isMatch(List_Generic::empty()));
    EXPECT_FALSE((I_Map<String, Any>::getType().isMatch(List_Generic::empty())));
}

}  // namespace
}  // namespace ling::testing
