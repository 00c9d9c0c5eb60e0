#include "runtime/support/values.h"

namespace ling::testing {
namespace {

TEST(Date, ExistsOrIsAnError) {
    const std::pair<Date, const char*> rows[] = {{Date(2024, 2, 29), "2024-02-29"},
                                                 {Date(2000, 2, 29), "2000-02-29"},
                                                 {Date(0, 12, 31), "0000-12-31"},
                                                 {Date(-1, 1, 31), "-000001-01-31"},
                                                 {Date(10000, 4, 30), "+010000-04-30"},
                                                 {Date(999999, 12, 31), "+999999-12-31"},
                                                 {Date(-999999, 1, 1), "-999999-01-01"},
                                                 {Date(2023, 2, 29), "Invalid date: 2023-02-29."},
                                                 {Date(1900, 2, 29), "Invalid date: 1900-02-29."},
                                                 {Date(2024, 4, 31), "Invalid date: 2024-04-31."},
                                                 {Date(2024, 0, 1), "Invalid date: 2024-00-01."},
                                                 {Date(2024, 13, 1), "Invalid date: 2024-13-01."},
                                                 {Date(2024, 1, 0), "Invalid date: 2024-01-00."},
                                                 {Date(1000000, 1, 1), "Invalid date: +1000000-01-01."},
                                                 {Date(-1000000, 1, 1), "Invalid date: -1000000-01-01."}};
    for (const auto& [date, expected] : rows)
        EXPECT_EQ(plain(date), expected);
}

TEST(Date, FieldsOfAnErrorReadAsZero) {
    const Date date(2023, 2, 30);
    EXPECT_EQ(date.year(), 0);
    EXPECT_EQ(date.month(), 0);
    EXPECT_EQ(date.day(), 0);
    EXPECT_FALSE(Date::cast(date));
}

TEST(Time, ExistsOrIsAnError) {
    const String none;
    EXPECT_EQ(plain(Time(12, 30, 15)), "12:30:15");
    EXPECT_EQ(plain(Time(0, 0, 0, 999)), "00:00:00.000000999");
    EXPECT_EQ(plain(Time(23, 59, 59, 999'999'999)), "23:59:59.999999999");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, 7200, none, 0)), "12:30:15+02:00");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, 0, none, 0)), "12:30:15+00:00");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, -1, none, 0)), "12:30:15-00:00:01");
    EXPECT_EQ(plain(Time(12, 30, 15, 0, 86399, none, 1)), "12:30:15+23:59:59");
    EXPECT_EQ(plain(Time(24, 0, 0)), "Invalid time: 24:00:00.");
    EXPECT_EQ(plain(Time(0, 60, 0)), "Invalid time: 00:60:00.");
    EXPECT_EQ(plain(Time(0, 0, 60)), "Invalid time: 00:00:60.");
    EXPECT_EQ(plain(Time(0, 0, 0, 1'000'000'000)), "Invalid time: 00:00:00.1000000000.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, 86400, none, 0)), "Invalid time: 00:00:00+24:00.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, -86400, none, 0)), "Invalid time: 00:00:00-24:00.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, INT64_MIN, none, 0)), "Invalid time: 00:00:00-2562047788015215:30:08.");
    EXPECT_EQ(plain(Time(0, 0, 0, 0, 0, none, 2)), "Invalid time: 00:00:00+00:00, fold 2.");
}

TEST(Time, KeepsItsFields) {
    const Time time(1, 2, 3, 4, -3600, String(u"Z\u00F6ne"), 1);
    EXPECT_EQ(time.hour(), 1);
    EXPECT_EQ(time.minute(), 2);
    EXPECT_EQ(time.second(), 3);
    EXPECT_EQ(time.nanoSeconds(), 4u);
    EXPECT_TRUE(time.hasOffset());
    EXPECT_EQ(time.offset(), -3600);
    EXPECT_EQ(time.zoneName(), String(u"Z\u00F6ne"));
    EXPECT_EQ(time.fold(), 1);
    EXPECT_FALSE(Time(1, 2, 3).hasOffset());
    EXPECT_EQ(Time(1, 2, 3).offset(), 0);
    EXPECT_EQ(Time(25, 0, 0).zoneName(), String());
}

TEST(DateTime, PassesOnTheErrorOfAPart) {
    EXPECT_EQ(plain(DateTime(Date(2024, 2, 29), Time(12, 30, 15))), "2024-02-29T12:30:15");
    EXPECT_EQ(plain(DateTime(Date(2024, 2, 30), Time(25, 0, 0))), "Invalid date: 2024-02-30.");
    const DateTime wrong(Date(2024, 2, 29), Time(25, 0, 0));
    EXPECT_EQ(plain(wrong), "Invalid time: 25:00:00.");
    EXPECT_EQ(wrong.date().year(), 0);
    EXPECT_EQ(wrong.time().hour(), 0);
}

/// Every pair of values compares as its rows do, and the values of a row are equal and hash alike.
template <class Handle>
void expectOrder(const std::vector<std::vector<Handle>>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = 0; j < rows.size(); ++j)
            for (const Handle& a : rows[i])
                for (const Handle& b : rows[j]) {
                    ASSERT_EQ(compare_objects(a, b), i < j ? -1 : i > j ? 1 : 0) << plain(a) << " and " << plain(b);
                    if (i == j) {
                        ASSERT_EQ(hash_of(a), hash_of(b)) << plain(a) << " and " << plain(b);
                    }
                }
}

TEST(DateTimeOrder, OfDatesIsThatOfDays) {
    expectOrder<Date>({{Date(-999999, 1, 1)},
                       {Date(-1, 12, 31)},
                       {Date(0, 2, 29)},
                       {Date(0, 3, 1)},
                       {Date(1999, 12, 31)},
                       {Date(2000, 1, 1), Date(2000, 1, 1)},
                       {Date(2000, 2, 29)},
                       {Date(2000, 3, 1)},
                       {Date(999999, 12, 31)}});
}

TEST(DateTimeOrder, OfTimesIsThatOfUtc) {
    const auto zoned = [](unsigned char hour, std::int64_t offset, const char* zone = "", unsigned char fold = 0) {
        return Time(hour, 0, 0, 0, offset, String(zone), fold);
    };
    expectOrder<Time>({{zoned(0, 7200)},
                       {Time(0, 0, 0)},
                       {zoned(0, 0), zoned(2, 7200)},
                       {Time(10, 0, 0)},
                       {zoned(12, 7200), zoned(10, 0), zoned(9, -3600, "X", 1)},
                       {Time(10, 0, 0, 1)},
                       {Time(12, 0, 0)},
                       {zoned(23, -3600)}});
}

TEST(DateTimeOrder, OfInstantsGoesOverMidnight) {
    const auto at = [](unsigned char day, unsigned char hour, std::int64_t offset) {
        return DateTime(Date(2024, 3, day), Time(hour, 0, 0, 0, offset, String(), 0));
    };
    expectOrder<DateTime>({{at(1, 0, 3600)},
                           {DateTime(Date(2024, 3, 1), Time(0, 0, 0))},
                           {at(1, 0, 0), at(1, 1, 3600)},
                           {at(1, 23, 0), at(2, 1, 7200)},
                           {DateTime(Date(2024, 3, 2), Time(1, 0, 0))}});
}

TEST(DateTimeOrder, KnowsNoOtherClass) {
    const Any outcome = Date(2024, 1, 1).callMethod(Any::$__compare__, {Time(0, 0, 0)});
    EXPECT_EQ(Error::cast(outcome)->message().toStdString(),
              "Unable to cast a value of class 'ling.Time' to 'ling.Date'.");
    EXPECT_NE(compare_objects(Date(2024, 1, 1), Time(0, 0, 0)), 0);
}

}  // namespace
}  // namespace ling::testing
