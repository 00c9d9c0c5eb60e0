#include "runtime/support/foreign_containers.h"
#include "runtime/support/live_objects.h"
#include "runtime/support/sequence_model.h"

namespace ling {
namespace {

using namespace ling::testing;

class Sequence : public LiveObjects {
protected:
    static I_MutableSequence_Generic foreign(const Any& content) {
        return unchecked<I_MutableSequence_Generic>(wrap(foreignSequence(), content));
    }
};

TEST_F(Sequence, ReadsByTheDefaults) {
    const auto sequence = foreign(listOf(10, 20, 30, 20));
    EXPECT_EQ(walked(sequence), "[10, 20, 30, 20]");
    EXPECT_EQ(shown(sequence.collectImpl()), "[10, 20, 30, 20]");
    EXPECT_EQ(shown(sequence.contains(30)), "true");
    EXPECT_EQ(shown(sequence.contains(31)), "false");
    EXPECT_EQ(shown(sequence.atOr(1, 0)), "20");
    EXPECT_EQ(shown(sequence.atOr(4, 0)), "0");
}

struct IndexOfCase {
    const char* name;
    int item;
    std::int64_t start;
    const char* expected;
};

constexpr IndexOfCase kIndexOfCases[] = {
    {"First", 10, 0, "0"},           {"FirstOfTwo", 20, 0, "1"},
    {"SecondOfTwo", 20, 2, "3"},     {"Absent", 99, 0, "-1"},
    {"BeforeStart", 10, 1, "-1"},    {"FromTheEnd", 20, -1, "3"},
    {"FromFarBefore", 10, -99, "0"}, {"FromTheSmallest", 10, INT64_MIN, "0"},
    {"FromPastTheEnd", 20, 4, "-1"}, {"FromTheLargest", 20, INT64_MAX, "-1"},
};

class SequenceIndexOf : public LiveObjectsOf<::testing::TestWithParam<IndexOfCase>> {};

TEST_P(SequenceIndexOf, IsTheSameForAllSequences) {
    const IndexOfCase& row = GetParam();
    const Any sequences[] = {listOf(10, 20, 30, 20), tupleOf(10, 20, 30, 20),
                             wrap(foreignSequence(), listOf(10, 20, 30, 20))};
    for (const Any& sequence : sequences) {
        EXPECT_EQ(shown(unchecked<I_Sequence_Generic>(sequence).indexOf(row.item, row.start)), row.expected);
        EXPECT_EQ(shown(sequence.callMethod(I_Sequence_Generic::$indexOf, {row.item, row.start})), row.expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, SequenceIndexOf, ::testing::ValuesIn(kIndexOfCases),
                         [](const auto& row) { return row.param.name; });

TEST_F(Sequence, AnIterationFollowsTheLengthAndStaysEnded) {
    const List_Generic content = listOf(1, 2, 3);
    const auto sequence = foreign(content);
    const Any iterator = sequence.iter();
    const auto& next = unchecked<I_Iterator_Generic>(iterator);
    EXPECT_EQ(shown(next.next()), "1");
    content.pop();
    EXPECT_EQ(shown(next.next()), "2");
    EXPECT_TRUE(StopIteration::cast(next.next()));
    content.append(4);
    content.append(5);
    EXPECT_TRUE(StopIteration::cast(next.next())) << "What is added after the end was reached comes too late.";
}

TEST_F(Sequence, WhatVanishesBetweenLengthAndItemIsTheEnd) {
    const List_Generic content = listOf(1, 2);
    const Class_Generic shrinking =
        internal::defclass_impl("Shrinking", "")
            .parent(I_Sequence_Generic::getClass())
            .property(I_Sequence_Generic::$$length, internal::property_builder().getter([content](const Any&) {
                return static_cast<std::int64_t>(content.size());
            }))
            .method(I_Sequence_Generic::$at, "index",
                    [content](const Any&, const Any& index) -> Any {
                        content.clear();
                        return content.at(index);
                    })
            .build();
    EXPECT_EQ(walked(shrinking.allocateInstance()), "[]");
}

struct BrokenCase {
    const char* name;
    Any (*length)();
    const char* outcome;
};

const BrokenCase kBrokenCases[] = {
    {"Error", [] { return internal::failure(u"No length."); }, "error: No length."},
    {"Text", [] { return Any(String(u"3")); },
     "error: Unable to cast a value of class 'ling.String' to 'ling.Integer'."},
    {"None", [] { return Any(); }, "error: Unable to cast a value of class 'ling.None' to 'ling.Integer'."},
};

class BrokenLength : public LiveObjectsOf<::testing::TestWithParam<BrokenCase>> {};

TEST_P(BrokenLength, IsReportedByEveryDefault) {
    const Class_Generic cls =
        internal::defclass_impl("Broken", "")
            .parent(I_MutableSequence_Generic::getClass())
            .property(I_Sequence_Generic::$$length,
                      internal::property_builder().getter([](const Any&) -> Any { return GetParam().length(); }))
            .build();
    const auto sequence = unchecked<I_MutableSequence_Generic>(cls.allocateInstance());
    EXPECT_EQ(walked(sequence), GetParam().outcome);
    EXPECT_EQ(shown(sequence.length()), GetParam().outcome);
    EXPECT_EQ(shown(sequence.indexOf(1)), GetParam().outcome);
    EXPECT_EQ(shown(sequence.indexOf(1, -1)), GetParam().outcome);
    EXPECT_EQ(shown(sequence.append(1)), GetParam().outcome);
    EXPECT_EQ(shown(sequence.pop()), GetParam().outcome);
    EXPECT_EQ(shown(sequence.removeOne(1)), GetParam().outcome);
    EXPECT_EQ(shown(sequence.clear()), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(Rows, BrokenLength, ::testing::ValuesIn(kBrokenCases),
                         [](const auto& row) { return row.param.name; });

TEST_F(Sequence, ANegativeLengthIsEmpty) {
    const Class_Generic cls =
        internal::defclass_impl("Negative", "")
            .parent(I_MutableSequence_Generic::getClass())
            .property(I_Sequence_Generic::$$length, internal::property_builder().getter([](const Any&) { return -5; }))
            .build();
    const auto sequence = unchecked<I_MutableSequence_Generic>(cls.allocateInstance());
    EXPECT_EQ(walked(sequence), "[]");
    EXPECT_EQ(shown(sequence.indexOf(1)), "-1");
    EXPECT_EQ(shown(sequence.pop()), "error: Index out of range: -1.");
    EXPECT_EQ(shown(sequence.clear()), "none");
}

TEST_F(Sequence, WhatIsNotImplementedIsNamed) {
    const Class_Generic cls = internal::defclass_impl("Bare", "").parent(I_MutableSequence_Generic::getClass()).build();
    const auto sequence = unchecked<I_MutableSequence_Generic>(cls.allocateInstance());
    EXPECT_EQ(shown(sequence.at(0)), "error: Method 'at' not found in: <Bare>.");
    EXPECT_EQ(shown(sequence.set(0, 1)), "error: Method 'set' not found in: <Bare>.");
    EXPECT_EQ(shown(sequence.length()), "error: Property 'length' not found in: <Bare>.");
}

TEST_F(Sequence, TheDefaultsOfAMutableSequenceAgreeWithTheModel) {
    const Class_Generic cls = foreignSequence();
    expectAgreement(3, false, [&] { return wrap(cls, List_Generic()); });
}

TEST_F(Sequence, ExtendingByAnotherViewOfTheSameItemsEnds) {
    const List_Generic content = listOf(1, 2);
    const Class_Generic cls = foreignSequence();
    const Any view = wrap(cls, content);
    const Any other = wrap(cls, content);
    EXPECT_EQ(shown(unchecked<I_MutableSequence_Generic>(view).extend(other)), "none");
    EXPECT_EQ(shown(content), "[1, 2, 1, 2]");
}

TEST_F(Sequence, ExtendingByWhatFailsAddsNothing) {
    const auto sequence = foreign(listOf(1));
    EXPECT_EQ(shown(sequence.extend(5)), "error: Unable to cast a value of class 'ling.Integer' to 'ling.I_Iterable'.");
    EXPECT_EQ(shown(sequence.extend(Error(u"Not there.", true))), "error: Not there.");
    EXPECT_EQ(walked(sequence), "[1]");
}

}  // namespace
}  // namespace ling
