#pragma once

#include "ling/any.h"
#include "ling/result.h"
#include "ling/string.h"

#include <cstdint>

namespace ling {

/// A day of the proleptic Gregorian calendar. Years run from -999999 to 999999.
///
/// A date that does not exist is not made: the handle then holds an error result ("Invalid date: 2023-02-30."), which
/// `is_error_result` finds, and its fields read as zero. The same holds for `Time` and `DateTime`.
class LING_EXPORT Date : public Any {
public:
    Date(int year, unsigned char month, unsigned char day);

    int year() const noexcept;
    unsigned char month() const noexcept;
    unsigned char day() const noexcept;
    String toString() const;  ///< "2024-02-29"; years outside 0 to 9999 with a sign and at least six digits.

    static Result<Date> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

private:
    explicit Date(Any&& value) noexcept : Any(std::move(value)) {}
    friend class DateTime;
};

/// A time of day to the nanosecond, perhaps with its offset from UTC in seconds, the name of its zone, and which of
/// two equal readings of a clock that was set back it is (fold 0 or 1).
///
/// Times with offsets compare by what the clock shows in UTC, without turning over at midnight. One without an offset
/// has its place in that order as if it were UTC, before the one that says so. Zone name and fold do not count.
class LING_EXPORT Time : public Any {
public:
    Time(unsigned char hour, unsigned char minute, unsigned char second, unsigned int nanoSeconds = 0);
    Time(unsigned char hour, unsigned char minute, unsigned char second, unsigned int nanoSeconds, std::int64_t offset,
         const String& zoneName, unsigned char fold);

    unsigned char hour() const noexcept;
    unsigned char minute() const noexcept;
    unsigned char second() const noexcept;
    unsigned int nanoSeconds() const noexcept;
    bool hasOffset() const noexcept;
    std::int64_t offset() const noexcept;  ///< Seconds east of UTC, 0 when there is none; within a day either way.
    String zoneName() const;
    unsigned char fold() const noexcept;
    String toString() const;  ///< "12:30:15", "12:30:15.000000999", "12:30:15+02:00", "12:30:15-00:00:01".

    static Result<Time> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();

private:
    explicit Time(Any&& value) noexcept : Any(std::move(value)) {}
    friend class DateTime;
};

/// A date and a time of day. Two date-times with offsets compare as the instants they are, two without by their fields;
/// between the two sorts the order is that of `Time`.
class LING_EXPORT DateTime : public Any {
public:
    DateTime(const Date& date, const Time& time);

    Date date() const;
    Time time() const;
    String toString() const;  ///< "2024-02-29T12:30:15".

    static Result<DateTime> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

}  // namespace ling
