#include "runtime/support/live_objects.h"
#include "runtime/support/small_stack.h"
#include "runtime/support/values.h"

#include <limits>

namespace ling::testing {
namespace {

Class_Generic displayClass(std::function<Any(const Any& self)> text) {
    return internal::defclass_impl("Shown", "")
        .method(Any::$__display__, "", [text](const Any& self) -> Any { return text(self); })
        .build();
}

struct DisplayCase {
    const char* name;
    std::function<Any()> value;
    const char16_t* text;
};

Any mapOf(std::initializer_list<std::pair<Any, Any>> pairs) {
    return Map_Generic(std::span<const std::pair<Any, Any>>(pairs.begin(), pairs.size()));
}

Any setOf(std::vector<Any> items) { return Set_Generic(items); }

std::vector<DisplayCase> valueCases() {
    return {
        {"None", [] { return Any(); }, u"none"},
        {"Undefined", [] { return Undefined(); }, u"undefined"},
        {"True", [] { return Any(true); }, u"true"},
        {"False", [] { return Any(false); }, u"false"},
        {"SmallestInteger", [] { return Any(std::numeric_limits<std::int64_t>::min()); }, u"-9223372036854775808"},
        {"Float", [] { return Any(2.0); }, u"2.0"},
        {"NaN", [] { return Any(std::numeric_limits<double>::quiet_NaN()); }, u"nan"},
        {"Decimal", [] { return Decimal::fromString(u"1.10"); }, u"1.10"},
        {"Text", [] { return String(u"it's\n"); }, u"it's\n"},
        {"EmptyText", [] { return String(); }, u""},
        {"Slice", [] { return String(std::u16string(200, u'x')).sliced(1, Any(198)).sliced(195); }, u"xxx"},
        {"Bytes", [] { return ByteArray(std::string_view("a\0'", 3)); }, u"b'a\\x00\\''"},
        {"EmptyBytes", [] { return ByteArray(); }, u"b''"},
        {"Date", [] { return Date(2024, 2, 29); }, u"2024-02-29"},
        {"Error", [] { return Error(u"Broken."); }, u"Broken."},
        {"ErrorResult", [] { return internal::failure(u"Broken."); }, u"Broken."},
        {"Class", [] { return List_Generic::getClass(); }, u"ling.List"},
        {"Module", [] { return find_module(u"ling"); }, u"ling"},
        {"Function", [] { return make_function("f", "a, b", [](const Any& a, std::int64_t) { return a; }); },
         u"f(a, b)"},
        {"Object", [] { return internal::defclass_impl("Plain", "").build().allocateInstance(); }, u"<Plain>"},
        {"Lazy", [] { return Lazy_Generic([] { return Any(7); }); }, u"7"},
        {"LazyText", [] { return Lazy_Generic([] { return String(u"x"); }); }, u"x"},
        {"LazyFailure", [] { return Lazy_Generic([] { return internal::failure(u"No."); }); }, u"No."},
        {"DeadWeak", [] { return Weak_Generic(listOf(1)); }, u"none"},
        {"Box", [] { return Boxed<int>(5); }, u"<Boxed<i>>"},
    };
}

std::vector<DisplayCase> containerCases() {
    return {
        {"List", [] { return listOf(1, u"a"); }, u"[1, 'a']"},
        {"EmptyList", [] { return listOf(); }, u"[]"},
        {"Tuple", [] { return tupleOf(1, 2); }, u"(1, 2)"},
        {"TupleOfOne", [] { return tupleOf(1); }, u"(1,)"},
        {"EmptyTuple", [] { return tupleOf(); }, u"()"},
        {"Map",
         [] {
             return mapOf({{String(u"a"), 1}, {2, listOf()}});
         },
         u"{'a': 1, 2: []}"},
        {"EmptyMap", [] { return Map_Generic(); }, u"{}"},
        {"Set",
         [] {
             return setOf({1, String(u"b")});
         },
         u"{1, 'b'}"},
        {"EmptySet", [] { return Set_Generic(); }, u"Set()"},
        {"NoneInside", [] { return listOf(Any(), Undefined()); }, u"[none, undefined]"},
        {"LazyInside", [] { return listOf(Lazy_Generic([] { return String(u"x"); })); }, u"['x']"},
        {"Siblings", [] { return [list = listOf(1)] { return listOf(list, list); }(); }, u"[[1], [1]]"},
        {"Quotes", [] { return listOf(u"it's \"\\\""); }, u"['it\\'s \"\\\\\"']"},
        {"Controls", [] { return listOf(String(std::u16string_view(u"\n\r\t\0\x1F\x7F\x9F\xA0", 8))); },
         u"['\\n\\r\\t\\x00\\x1f\\x7f\\x9f\xA0']"},
        {"Pair", [] { return listOf(u"\U0001F600"); }, u"['\U0001F600']"},
        {"LoneLead",
         [] {
             return listOf(String(std::u16string{0xD83D, u'a'}));
         },
         u"['\\ud83da']"},
        {"LoneTrail",
         [] {
             return listOf(String(std::u16string{u'a', 0xDE00}));
         },
         u"['a\\ude00']"},
        {"PairTurnedRound",
         [] {
             return listOf(String(std::u16string{0xDE00, 0xD83D}));
         },
         u"['\\ude00\\ud83d']"},
    };
}

class Display : public LiveObjectsOf<::testing::TestWithParam<DisplayCase>> {
protected:
    Display() { (void)Boxed<int>::getClass(); }
};

TEST_P(Display, ShowsAPersonTheValue) {
    EXPECT_EQ(display(GetParam().value()).toStdString(), String(GetParam().text).toStdString());
}

INSTANTIATE_TEST_SUITE_P(Values, Display, ::testing::ValuesIn(valueCases()),
                         [](const auto& row) { return row.param.name; });
INSTANTIATE_TEST_SUITE_P(Containers, Display, ::testing::ValuesIn(containerCases()),
                         [](const auto& row) { return row.param.name; });

class DisplayOf : public LiveObjects {};

TEST_F(DisplayOf, AListInItselfEnds) {
    const List_Generic list = listOf(1);
    list.append(list);
    list.append(tupleOf(list));
    EXPECT_EQ(display(list), u"[1, ..., (...,)]");
    list.clear();
}

TEST_F(DisplayOf, AMapInItselfEnds) {
    const Map_Generic map;
    map.set(String(u"self"), map);
    EXPECT_EQ(display(map), u"{'self': ...}");
    map.clear();
}

TEST_F(DisplayOf, AnObjectSaysItself) {
    const Class_Generic cls = displayClass([](const Any&) { return String(u"it's me"); });
    EXPECT_EQ(display(cls.allocateInstance()), u"it's me");
    const Any object = cls.allocateInstance();
    EXPECT_EQ(display(listOf(object, object)), u"[it's me, it's me]");
    const Class_Generic lazy = displayClass([](const Any&) { return Lazy_Generic([] { return String(u"late"); }); });
    EXPECT_EQ(display(lazy.allocateInstance()), u"late");
}

TEST_F(DisplayOf, AnObjectThatFailsShowsAsItsClass) {
    for (const Any& answer : {internal::failure(u"No text."), Any(5), Any()})
        EXPECT_EQ(display(displayClass([answer](const Any&) { return answer; }).allocateInstance()), u"<Shown>");
}

TEST_F(DisplayOf, AnObjectThatShowsItsOwnContainerEnds) {
    const List_Generic content = listOf();
    const Class_Generic cls =
        displayClass([&](const Any& self) { return String(u"S{}{}").arg(display(content), display(self)); });
    content.append(cls.allocateInstance());
    EXPECT_EQ(display(content), u"[S......]");
    EXPECT_EQ(display(content.at(0)), u"S[...]...");
    content.clear();
}

TEST_F(DisplayOf, AChainOfObjectsEnds) {
    Class_Generic cls = displayClass([&](const Any&) { return String(u"-") + display(cls.allocateInstance()); });
    onSmallStack([&] {
        const String text = display(cls.allocateInstance());
        EXPECT_TRUE(text.startsWith(u"----")) << text.toStdString();
        EXPECT_EQ(text.view().substr(text.length() - 4), u"-...");
        EXPECT_GT(text.length(), 104u) << "The stack ends it, not a number of levels.";
    });
    cls = Class_Generic();
}

TEST_F(DisplayOf, DeepContainersNeedNoStack) {
    onSmallStack([] {
        constexpr std::size_t kDepth = 251'000;
        Any nested = tupleOf();
        for (std::size_t i = 0; i < kDepth; ++i)
            nested = listOf(std::move(nested));
        EXPECT_EQ(display(nested).length(), 2 * kDepth + 2);
    });
}

TEST_F(DisplayOf, AValueThatGrowsWhileItIsShownEnds) {
    // Each load makes a new list around the value itself, which no memory of what was shown can tell.
    Any endless;
    endless = External_Generic([&] { return listOf(endless); });
    const String text = display(endless);
    EXPECT_EQ(text.indexOf(u"...]"), 250'001);
    endless = Any();
}

TEST_F(DisplayOf, AMessageHasRoomForTheBeginningOfAValue) {
    const auto messageAbout = [](const Any& value) { return String(u"<{}>").arg(value).toStdString(); };
    EXPECT_EQ(messageAbout(listOf(1, String(u"a"))), "<[1, 'a']>");
    const String text = String(std::u16string(300, u'x'));
    EXPECT_EQ(String(u"<{}>").arg(text).length(), 302u) << "A text that the message is made of.";
    EXPECT_EQ(messageAbout(Any(text)), "<" + std::string(200, 'x') + "...>");
    EXPECT_EQ(messageAbout(listOf(text)), "<['" + std::string(199, 'x') + "'...]>");
    EXPECT_EQ(messageAbout(listOf(listOf(text, 1), 2)), "<[['" + std::string(198, 'x') + "'..., ...], ...]>");
    const List_Generic many;
    for (int i = 0; i < 1000; ++i)
        many.append(i % 10);
    EXPECT_EQ(messageAbout(many).substr(0, 8) + messageAbout(many).substr(197), "<[0, 1, 5, 6, ...]>");
    EXPECT_EQ(display(many).length(), 3000u) << "Only messages are cut.";
    Map_Generic map;
    map.set(text, 1);
    EXPECT_EQ(messageAbout(map), "<{'" + std::string(199, 'x') + "'...: ...}>");
    Any nested = listOf();
    for (int i = 0; i < 1000; ++i)
        nested = listOf(std::move(nested));
    EXPECT_EQ(messageAbout(nested), "<" + std::string(200, '[') + "..." + std::string(200, ']') + ">");
}

}  // namespace
}  // namespace ling::testing
