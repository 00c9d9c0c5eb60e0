#pragma once

#include "ling/class_record.h"
#include "ling/date_time.h"

#include <cstdint>
#include <optional>

namespace ling {

namespace internal {

/// The parts of dates and times as they are given: wide enough for values that are not valid, so that nothing wraps
/// before it is checked.
struct date_fields {
    std::int64_t year = 1970;
    std::int64_t month = 1;
    std::int64_t day = 1;
};
struct time_fields {
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    std::int64_t second = 0;
    std::int64_t nanoSeconds = 0;
    std::optional<std::int64_t> offset;
    String zoneName;
    std::int64_t fold = 0;
};

bool is_valid(const date_fields& date) noexcept;
bool is_valid(const time_fields& time) noexcept;
String text_of(const date_fields& date);
String text_of(const time_fields& time);

class object_value_date final : public object_value_object {
public:
    object_value_date(object_value_class* klass, const date_fields& itsFields)
        : object_value_object(klass), fields(itsFields) {}
    const date_fields fields;
};
class object_value_time final : public object_value_object {
public:
    object_value_time(object_value_class* klass, const time_fields& itsFields)
        : object_value_object(klass), fields(itsFields) {}
    const time_fields fields;
};
class object_value_date_time final : public object_value_object {
public:
    object_value_date_time(object_value_class* klass, const Date& itsDate, const Time& itsTime)
        : object_value_object(klass), date(itsDate), time(itsTime) {}
    const Date date;
    const Time time;
};

/// A date or time of these fields, or the error result that says that there is none.
Any make_date(const date_fields& fields);
Any make_time(const time_fields& fields);
/// The fields behind a handle; those of the beginning of time for a handle that holds an error.
const date_fields& fields_of(const Date& date) noexcept;
const time_fields& fields_of(const Time& time) noexcept;

/// Negative, zero or positive.
int compare_dates(const Date& a, const Date& b) noexcept;
int compare_times(const Time& a, const Time& b) noexcept;
int compare_date_times(const DateTime& a, const DateTime& b) noexcept;
/// Equal for values that compare equal.
std::int64_t hash_date(const Date& date) noexcept;
std::int64_t hash_time(const Time& time) noexcept;
std::int64_t hash_date_time(const DateTime& dateTime) noexcept;

}  // namespace internal

}  // namespace ling
