#include "runtime/support/values.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// C++ values as values of the runtime: native functions, and classes bound by `native_class`.

namespace ling::testing {
namespace {

std::string textOf(const Any& value) {
    if (!is_error_result(value))
        return display(value).toStdString();
    const Result<Error> error = Error::cast(value);
    const Result<Error> cause = Error::cast(error->cause());
    return "error: " + error->message().toStdString() + (cause ? " / " + cause->message().toStdString() : "");
}

Any call(const I_Invokable_Generic& function, std::vector<Any> arguments) { return function.invoke(arguments); }

// Parameters and results.

struct ConversionCase {
    const char* name;
    FunctionCL_Generic function;
    std::vector<Any> arguments;
    std::string outcome;
};

template <class F>
FunctionCL_Generic native(F&& code) {
    return make_function("f", "a", std::forward<F>(code));
}

const auto kHalf = [](float value) { return value / 2; };
const auto kJoin = [](const std::vector<std::string>& words, std::string_view by) {
    std::string all;
    for (const std::string& word : words)
        all += (all.empty() ? "" : std::string(by)) + word;
    return all;
};
const auto kSum = [](std::span<const double> numbers) noexcept {
    double sum = 0;
    for (const double number : numbers)
        sum += number;
    return sum;
};
const auto kApply = [](const std::function<long(long, std::string)>& callback, long value) {
    return callback(value, "x") + 1;
};
const auto kOption = [](std::optional<std::string> text) { return text; };
const auto kNested = [](const std::vector<std::vector<int>>& rows) { return rows; };
const auto kDocument = [](const JsonObject& document) { return document.size(); };
const auto kTyped = [](const List<String>& words, const Map<String, Integer>& counts) -> Result<std::int64_t> {
    std::int64_t sum = 0;
    for (const Result<String>& word : words) {
        if (!word)
            return Failure(word.error());
        const Result<Integer> count = counts.get(*word);
        if (!count)
            return Failure(count.error());
        sum += count->value();
    }
    return sum;
};

I_Invokable_Generic lengthOf() {
    return make_function("lengthOf", "n, text", [](long n, const String& text) -> Result<long> {
        if (n < 0)
            return failure("Negative: {}", n);
        return n * 10 + static_cast<long>(text.length());
    });
}

std::string wrong(const std::string& expected, const std::string& found) {
    return "error: Argument 'a' of 'f' must be of type '" + expected + "', not 'ling." + found + "'.";
}

const ConversionCase kConversionRows[] = {
    {"Float", native(kHalf), {3}, "1.5"},
    {"SmallInteger", native([](signed char c) { return c; }), {-128}, "-128"},
    {"IntegerThatDoesNotFit", native([](unsigned char c) { return c; }), {256}, wrong("Integer", "Integer")},
    {"LargeResult", native([] { return ~std::uint64_t(0); }), {}, "18446744073709551615"},
    {"LargestIntegerStaysOne", native([] { return std::uint64_t(1) << 62; }), {}, "4611686018427387904"},
    {"Vector", native(kJoin), {List_Generic{"a", "b"}, "-"}, "a-b"},
    {"VectorOfASet", native(kJoin), {Set_Generic{"a"}, ""}, "a"},
    {"TextIsNoVector", native(kJoin), {"ab", "-"}, wrong("I_Iterable<String>", "String")},
    {"WrongItem",
     native(kJoin),
     {List_Generic{"a", 2}, "-"},
     "error: Argument 'a' of 'f' must be of type 'I_Iterable<String>', not 'ling.List'. / Item 1 "
     "must be of type 'String', not 'ling.Integer'."},
    {"Rest", native(kSum), {1, 2, 0.5}, "3.5"},
    {"EmptyRest", native(kSum), {}, "0.0"},
    {"WrongRest", native(kSum), {1, "x"}, wrong("Float", "String")},
    {"Callback", native(kApply), {lengthOf(), 4}, "42"},
    {"FailingCallback", native(kApply), {lengthOf(), -4}, "error: Negative: -4"},
    {"CallbackOfAnotherType",
     native(kApply),
     {make_function("g", "", [](const Any&, const Any&) { return "text"; }), 1},
     "error: Unable to cast a value of class 'ling.String' to 'Integer'."},
    {"NoCallback", native(kApply), {3, 1}, wrong("I_Invokable", "Integer")},
    {"Option", native(kOption), {"x"}, "x"},
    {"NoOption", native(kOption), {Any()}, "none"},
    {"WrongOption", native(kOption), {1}, wrong("Option<String>", "Integer")},
    {"Nested", native(kNested), {List_Generic{List_Generic{1}, Tuple_Generic{2, 3}}}, "[[1], [2, 3]]"},
    {"Document", native(kDocument), {Map_Generic{{"a", 1}}}, "1"},
    {"Typed", native(kTyped), {List_Generic{"a", "b"}, Map_Generic{{"a", 1}, {"b", 2}}}, "3"},
    {"TypedItem",
     native(kTyped),
     {List_Generic{1}, Map_Generic()},
     "error: Unable to cast a value of class 'ling.Integer' to 'ling.String'."},
    {"TypedValue", native(kTyped), {List_Generic{"a"}, Map_Generic()}, "error: Key not found: a."},
    {"None", native([](None) { return "yes"; }), {1}, wrong("None", "Integer")},
    {"Union",
     native([](const Union<String, Integer>& value) { return value; }),
     {1.5},
     wrong("String|Integer", "Float")},
};
LING_TABLE(Conversion, ::testing::Test, kConversionRows);

TEST_P(Conversion, TakesWhatFitsAndNamesWhatDoesNot) {
    EXPECT_EQ(textOf(call(GetParam().function, GetParam().arguments)), GetParam().outcome);
}

TEST(NativeFunction, DeclaresDefaultsAndNameOnlyParameters) {
    const FunctionCL_Generic function = make_function("price", {"net", {"tax", 19}, "*", {"currency", "EUR"}},
                                                      [](double net, int tax, const std::string& currency) {
                                                          return String("{} {}").arg(net * (100 + tax) / 100, currency);
                                                      });
    EXPECT_EQ(function.signature()->toString().toStdString(),
              "(net: Float, tax: Integer = 19, *, currency: String = 'EUR') -> String");
    EXPECT_EQ(textOf(function(100)), "119.0 EUR");
    EXPECT_EQ(textOf(function.invokeWith(Map_Generic{{"net", 100}, {"tax", 0}, {"currency", "CHF"}})), "100.0 CHF");
}

/// The documented table, with what the code says in the places of what stands there.
struct TypeRow {
    const char* cpp;
    std::string taken;
    std::string given;
};
template <class T>
TypeRow typeRow(const char* cpp) {
    std::string taken;
    if constexpr (requires { native_parameter<T>::declaredType(); } && (readable<T> || is_rest<T>))
        taken = native_parameter<T>::declaredType().toString().toStdString();
    return {cpp, taken, given_type<T>().toString().toStdString()};
}
#define LING_TYPE_ROW(...) typeRow<__VA_ARGS__>(#__VA_ARGS__)

TEST(Conversion, TypesAreAsDocumented) {
    const TypeRow rows[] = {
        LING_TYPE_ROW(Any),
        LING_TYPE_ROW(bool),
        LING_TYPE_ROW(int),
        LING_TYPE_ROW(std::uint64_t),
        LING_TYPE_ROW(float),
        LING_TYPE_ROW(double),
        LING_TYPE_ROW(std::string),
        LING_TYPE_ROW(std::string_view),
        LING_TYPE_ROW(std::u16string),
        LING_TYPE_ROW(const char*),
        LING_TYPE_ROW(std::optional<double>),
        LING_TYPE_ROW(std::vector<std::string>),
        LING_TYPE_ROW(std::span<const double>),
        LING_TYPE_ROW(std::function<int(std::string)>),
        LING_TYPE_ROW(List<String>),
        LING_TYPE_ROW(I_Sequence<Integer>),
        LING_TYPE_ROW(Map<String, Integer>),
        LING_TYPE_ROW(JsonObject),
        LING_TYPE_ROW(Union<String, None>),
        LING_TYPE_ROW(Result<std::int64_t>),
    };
    std::ifstream file(LING_SOURCES "/docs/conversions.md");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const auto code = [](const std::string& cell) { return cell.empty() ? "" : "`" + cell + "` "; };
    std::string table = "| C++ type | taken from | given as |\n|---|---|---|\n";
    for (const TypeRow& row : rows)
        table += "| " + code(row.cpp) + "| " + code(row.taken) + "| " + code(row.given) + "|\n";
    EXPECT_NE(text.find(table + "\n"), std::string::npos) << table;
}

// Walking.

TEST(RangeFor, WalksItemsAndPairsAndShowsAFailureAsTheLastItem) {
    std::string seen;
    for (const Any& item : Tuple_Generic{1, "b"})
        seen += textOf(item) + ";";
    for (const auto& [key, value] : Map_Generic{{"x", 1}, {"y", "z"}}.items())
        seen += textOf(key) + "=" + textOf(value) + ";";
    const List_Generic broken{1, Lazy_Generic([]() -> Any { return failure("broken"); }), 3};
    for (const Any& item : broken)
        seen += textOf(item) + ";";
    EXPECT_EQ(seen, "1;b;x=1;y=z;1;error: broken;");
}

TEST(RangeFor, AForeignMapGivesItsPairs) {
    const Class_Generic cls = class_builder("Squares", "")
                                  .parent(I_Map_Generic::getClass())
                                  .property(I_Map_Generic::$$keys, property_builder().getter([](const Any&) {
                                      return List_Generic{2, 3};
                                  }))
                                  .method(I_Map_Generic::$get, "key, fallback",
                                          [](const Any&, long key, const Any&) -> Any {
                                              return key == 2 ? Any(4) : Any(failure("no {}", key));
                                          })
                                  .build();
    const Any map = cls();
    std::string seen;
    for (const auto& [key, value] : I_Map_Generic::cast(map)->items())
        seen += textOf(key) + "=" + textOf(value) + ";";
    EXPECT_EQ(seen, "2=4;3=error: no 3;");
}

// Classes.

int livePeers = 0;

struct Named {
    std::string label = "named";
    std::string shout() const { return label + "!"; }
    Named() { ++livePeers; }
    Named(const Named& other) : label(other.label) { ++livePeers; }
    virtual ~Named() { --livePeers; }
};
struct Padding {
    virtual ~Padding() = default;
    long fill = 7;
};
/// Its base that is bound does not stand at its beginning.
struct Counter : Padding, Named {
    explicit Counter(long start) : value(start) {}
    long add(long amount) noexcept { return value += amount; }
    std::vector<long> steps() const { return {1, value}; }
    Counter plus(const Counter& other) const { return Counter(value + other.value); }
    long value;
};
struct Unbound {};

std::shared_ptr<Counter>& kept() {
    static std::shared_ptr<Counter> counter;
    return counter;
}

const Class_Generic& counterClass() {
    static const Class_Generic& cls = *new Class_Generic([] {
        (void)ling::native_class<Named>("Named", "peers")
            .property("label", &Named::label)
            .method("shout", &Named::shout)
            .build();
        return *ling::native_class<Counter>("Counter", "peers")
                    .inherits<Named>()
                    .constructor<long>({{"start", 5}})
                    .method("add", &Counter::add, "amount")
                    .method("plus", &Counter::plus, "other")
                    .method("keep", [](std::shared_ptr<Counter> self) { kept() = std::move(self); })
                    .method("unbound", [](Counter&) { return Unbound(); })
                    .property("value", &Counter::value)
                    .property(
                        "positive", [](const Counter& self) { return self.value > 0; },
                        [](Counter& self, bool positive) { self.value = positive ? 1 : -1; })
                    .classMethod("taken", [] { return kept(); })
                    .classMethod(
                        "made", [](long start) { return std::make_unique<Counter>(start); }, "start")
                    .iterable(&Counter::steps)
                    .build();
    }());
    return cls;
}

TEST(NativeClass, ObjectsHaveTheMembersOfTheClassAndOfItsBases) {
    const Any counter = counterClass()();
    EXPECT_EQ(textOf(counter.callMethod("add", {2})), "7");
    EXPECT_EQ(textOf(counter.propertyValue("value")), "7");
    EXPECT_EQ(textOf(counter.setPropertyValue("value", 3)), "none");
    EXPECT_EQ(textOf(counter.setPropertyValue("positive", false)), "none");
    EXPECT_EQ(textOf(counter.propertyValue("positive")), "false");
    EXPECT_EQ(textOf(counter.callMethod("shout")), "named!");
    EXPECT_EQ(textOf(counter.setPropertyValue("label", "n")), "none");
    EXPECT_EQ(textOf(counter.callMethod("plus", {counterClass()(10)}).propertyValue("value")), "9");
    EXPECT_EQ(textOf(counter.propertyValue("length")), "2");
    EXPECT_EQ(textOf(I_Iterable_Generic::cast(counter)->collectImpl().toAny()), "[1, -1]");
}

TEST(NativeClass, RefusesWhatIsNoObjectOfItsOwn) {
    const Any counter = counterClass()();
    EXPECT_EQ(textOf(counter.callMethod("plus", {3})),
              "error: Argument 'other' of 'plus' must be of type 'Counter', not 'ling.Integer'.");
    const Any named = find_class("peers.Named");
    EXPECT_EQ(textOf(unchecked<Class_Generic>(named)()), "error: The class 'Named' has no constructor.");
    EXPECT_EQ(textOf(counterClass()("x")),
              "error: Argument 'start' of 'Counter' must be of type 'Integer', not 'ling.String'.");
    EXPECT_EQ(textOf(counter.callMethod(Any::$__init__, {1})),
              "error: An object of class 'Counter' cannot be initialised again.");
    EXPECT_EQ(textOf(counterClass().allocateInstance().callMethod("add", {1})),
              "error: The object of class 'peers.Counter' is not initialised.");
    EXPECT_TRUE(textOf(counter.callMethod("unbound")).starts_with("error: No class stands for the C++ class"));
}

TEST(NativeClass, EachWayToGiveAnObjectSaysWhoOwnsIt) {
    const int before = livePeers;
    {
        const Any counter = counterClass()();
        (void)counter.callMethod("keep");
        const Any again = counterClass().callMethod("taken");
        EXPECT_FALSE(is_same(counter, again));
        EXPECT_EQ(compare_objects(counter, again), 0);
        EXPECT_EQ(hash_of(counter), hash_of(again));
        EXPECT_NE(compare_objects(counter, counterClass()()), 0);
        (void)again.callMethod("add", {1});
        EXPECT_EQ(textOf(counter.propertyValue("value")), "6");
        EXPECT_EQ(textOf(counterClass().callMethod("made", {3}).propertyValue("value")), "3");
    }
    EXPECT_EQ(livePeers, before + 1);
    EXPECT_EQ(kept()->value, 6);
    kept() = nullptr;
    EXPECT_EQ(livePeers, before);
    EXPECT_EQ(textOf(counterClass().callMethod("taken")), "none");
}

TEST(NativeClass, ADerivedClassOfAScriptStartsTheObjectOfItsBase) {
    const Any initialise = Any::share(counterClass().record()->findMethod(Any::$__init__).member);
    const Class_Generic derived = class_builder("Twice", "")
                                      .parent(counterClass())
                                      .method(Any::$__init__, "start",
                                              [initialise](const Any& self, long start) {
                                                  return unchecked<I_Invokable_Generic>(initialise)(self, start * 2);
                                              })
                                      .build();
    EXPECT_EQ(textOf(derived(4).callMethod("add", {1})), "9");
}

/// A language whose lock this thread holds; where code ran without it.
thread_local bool isLocked = false;
constexpr internal::guest_lock kLock{
    []() noexcept -> void* { return std::exchange(isLocked, false) ? &isLocked : nullptr; },
    [](void* left) noexcept { *static_cast<bool*>(left) = true; }};

struct Watched {
    bool seen() const { return isLocked; }
    bool fails() const { throw std::runtime_error(isLocked ? "locked" : "unlocked"); }
};
struct Watcher : Watched {
    std::vector<int> all() const { return {isLocked ? 1 : 0}; }
};

TEST(NativeClass, BlockingCodeRunsWithoutLocksAndIsConvertedUnderThem) {
    static const bool isAdded = internal::add_guest_lock(kLock);
    ASSERT_TRUE(isAdded);
    const auto cls =
        ling::native_class<Watcher>("Watcher", "peers")
            .factory(blocking([] { return isLocked ? nullptr : std::make_unique<Watcher>(); }))
            .method("seen", blocking(&Watched::seen))
            .method("fails", blocking(&Watched::fails))
            .property("read", blocking(&Watched::seen))
            .classMethod("called", blocking([](const std::function<bool()>& back, bool) { return back(); }),
                         "back, given")
            .iterable(blocking(&Watcher::all))
            .build();
    ASSERT_TRUE(cls) << textOf(cls.toAny());
    for (const bool before : {false, true}) {
        isLocked = before;
        const Any seen = make_function("seen", "", [] { return isLocked; });
        const Any watcher = (*cls)();
        EXPECT_EQ(textOf(watcher.callMethod("seen")), "false");
        EXPECT_EQ(textOf(watcher.callMethod("fails")), "error: unlocked");
        EXPECT_EQ(textOf(watcher.propertyValue("read")), "false");
        EXPECT_EQ(textOf(watcher.callMethod("called", {seen, true})), "false");
        EXPECT_EQ(textOf(*I_Iterable_Generic::cast(watcher)->collectImpl()), "[0]");
        EXPECT_EQ(textOf(unchecked<I_Invokable_Generic>(seen)()), before ? "true" : "false");
    }
}

TEST(NativeClass, ABuildThatFailsSaysSo) {
    EXPECT_EQ(textOf(ling::native_class<Counter>("Again", "peers").build().toAny()),
              "error: The C++ class of 'Again' is bound already.");
    struct Other {};
    EXPECT_EQ(textOf(ling::native_class<Other>("Counter", "peers").build().toAny()),
              "error: The name 'peers.Counter' is taken.");
    struct Derived : Unbound {};
    EXPECT_EQ(textOf(ling::native_class<Derived>("Derived", "").inherits<Unbound>().build().toAny()),
              "error: A base of 'Derived' is not bound yet.");
    class_builder builder("Circle", "");
    builder.parent(builder.unfinished()).build();
    EXPECT_EQ(textOf(builder.error()), "error: A class cannot be its own ancestor: 'Circle'.");
}

TEST(Lookup, FunctionsAndLanguagesAreFoundByName) {
    EXPECT_EQ(textOf(find_function("ling.display")(3)), "3");
    EXPECT_EQ(textOf(find_function("ling.List")().propertyValue("length")), "0");
    EXPECT_TRUE(find_function("ling.nothing").isNone());
    EXPECT_EQ(textOf(find_language("Klingon").toAny()), "error: There is no language 'Klingon' here.");
}

}  // namespace
}  // namespace ling::testing
