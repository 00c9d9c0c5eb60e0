#include "runtime/support/values.h"
#include "support/small_stack.h"

#include <limits>

namespace ling::testing {
namespace {

Class_Generic displayClass(std::function<Any(const Any& self)> text) {
    return defclass_impl("Shown", "")
        .method(Any::$__display__, "", [text](const Any& self) -> Any { return text(self); })
        .build();
}

String units(std::u16string_view text) { return String(text); }

const struct DisplayCase {
    const char* name;
    Any value;
    const char* text;
} kRows[] = {
    {"None", Any(), "none"},
    {"Undefined", Undefined(), "undefined"},
    {"True", true, "true"},
    {"SmallestInteger", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
    {"Float", 2.0, "2.0"},
    {"Text", "it's\n", "it's\n"},
    {"Slice", String(std::u16string(200, u'x')).sliced(1, Any(198)).sliced(195), "xxx"},
    {"Bytes", ByteArray(std::string_view(" a~\0\x1F\x7F\x80\xFF\t\n\r'\"\\", 14)),
     R"(b' a~\x00\x1f\x7f\x80\xff\t\n\r\'\"\\')"},
    {"Date", Date(2024, 2, 29), "2024-02-29"},
    {"Error", Error(u"Broken."), "Broken."},
    {"Class", List_Generic::getClass(), "ling.List"},
    {"Module", find_module(u"ling"), "ling"},
    {"Function", make_function("f", "a, b", [](const Any& a, std::int64_t) { return a; }), "f(a, b)"},
    {"Object", defclass_impl("Plain", "").build().allocateInstance(), "<Plain>"},
    {"Lazy", Lazy_Generic([] { return Any(7); }), "7"},
    {"LazyFailure", Lazy_Generic([] { return failure(u"No."); }), "No."},
    {"DeadWeak", Weak_Generic(listOf(1)), "none"},
    {"Box", Boxed<int>(5), "<Boxed<i>>"},
    {"List", listOf(1, "a"), "[1, 'a']"},
    {"EmptyList", listOf(), "[]"},
    {"Tuple", tupleOf(1, 2), "(1, 2)"},
    {"TupleOfOne", tupleOf(1), "(1,)"},
    {"EmptyTuple", tupleOf(), "()"},
    {"Map", Map_Generic{{"a", 1}, {2, listOf()}}, "{'a': 1, 2: []}"},
    {"EmptyMap", Map_Generic(), "{}"},
    {"Set", Set_Generic{1, "b"}, "{1, 'b'}"},
    {"EmptySet", Set_Generic(), "Set()"},
    {"Inside", listOf(Any(), Undefined(), Lazy_Generic([] { return String(u"x"); })), "[none, undefined, 'x']"},
    {"Siblings", [list = listOf(1)] { return listOf(list, list); }(), "[[1], [1]]"},
    {"Quotes", listOf("it's \"\\\""), R"(['it\'s "\\"'])"},
    {"Controls", listOf(units({u"\n\r\t\0\x1F\x7F\x9F\xA0", 8})), "['\\n\\r\\t\\x00\\x1f\\x7f\\x9f\xC2\xA0']"},
    {"Pair", listOf(units(u"\U0001F600")), "['\U0001F600']"},
    {"LoneLead", listOf(units({u"\xD83D!", 2})), "['\\ud83d!']"},
    {"PairTurnedRound", listOf(units({u"\xDE00\xD83D", 2})), "['\\ude00\\ud83d']"},
};
LING_TABLE(Display, ::testing::Test, kRows);

TEST_P(Display, ShowsAPersonTheValue) { EXPECT_EQ(plain(GetParam().value), GetParam().text); }

class DisplayOf : public LiveObjects {};

TEST_F(DisplayOf, AContainerInItselfEnds) {
    const List_Generic list = listOf(1);
    list.append(list);
    list.append(tupleOf(list));
    EXPECT_EQ(display(list), u"[1, ..., (...,)]");
    list.clear();
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
    for (const Any& answer : {failure(u"No text."), Any(5), Any()})
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
    int asked = 0;
    Map_Generic late;
    for (int i = 0; i < 10'000; ++i)
        late.set(i, Lazy_Generic([&asked] { return Any(++asked); }));
    EXPECT_EQ(messageAbout(late).substr(0, 8), "<{0: 1, ");
    EXPECT_LT(asked, 250) << "What is left out is not asked for.";
}

}  // namespace
}  // namespace ling::testing
