#include "library/date_time_value.h"

#include "ling/error.h"
#include "values/content_hash.h"

#include <compare>
#include <cstdio>

namespace ling::internal {

namespace {

constexpr std::int64_t kLargestYear = 999'999;
constexpr std::int64_t kSecondsOfDay = 24 * 60 * 60;

bool isLeapYear(std::int64_t year) noexcept { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

std::int64_t daysOfMonth(std::int64_t year, std::int64_t month) noexcept {
    constexpr std::int64_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays[month - 1] + (month == 2 && isLeapYear(year) ? 1 : 0);
}

bool isWithin(std::int64_t value, std::int64_t lowest, std::int64_t highest) noexcept {
    return value >= lowest && value <= highest;
}

}  // namespace

bool is_valid(const date_fields& date) noexcept {
    return isWithin(date.year, -kLargestYear, kLargestYear) && isWithin(date.month, 1, 12) &&
           isWithin(date.day, 1, daysOfMonth(date.year, date.month));
}

bool is_valid(const time_fields& time) noexcept {
    return isWithin(time.hour, 0, 23) && isWithin(time.minute, 0, 59) && isWithin(time.second, 0, 59) &&
           isWithin(time.nanoSeconds, 0, 999'999'999) &&
           isWithin(time.offset.value_or(0), -kSecondsOfDay + 1, kSecondsOfDay - 1) && isWithin(time.fold, 0, 1);
}

namespace {

/// A number with zeros in front of its digits, at least `width` of them.
std::string padded(std::int64_t number, int width) {
    char text[32];
    const int size = std::snprintf(text, sizeof text, "%0*lld", width, static_cast<long long>(number));
    return std::string(text, static_cast<std::size_t>(size));
}

std::string offsetText(std::int64_t offset) {
    // Without a sign first, so that the smallest number can be shown too.
    const auto bits = static_cast<std::uint64_t>(offset);
    const std::uint64_t magnitude = offset < 0 ? 0 - bits : bits;
    const auto part = [magnitude](std::uint64_t unit, std::uint64_t limit) {
        return padded(static_cast<std::int64_t>(magnitude / unit % limit), 2);
    };
    const std::string text = (offset < 0 ? "-" : "+") + part(3600, UINT64_MAX) + ":" + part(60, 60);
    return magnitude % 60 == 0 ? text : text + ":" + part(1, 60);
}

}  // namespace

String text_of(const date_fields& date) {
    const bool plainYear = isWithin(date.year, 0, 9999);
    const int digits = date.year < 0 ? 7 : 6;  // The minus sign is among them.
    const std::string year = plainYear ? padded(date.year, 4) : (date.year < 0 ? "" : "+") + padded(date.year, digits);
    return String(year + "-" + padded(date.month, 2) + "-" + padded(date.day, 2));
}

String text_of(const time_fields& time) {
    std::string text = padded(time.hour, 2) + ":" + padded(time.minute, 2) + ":" + padded(time.second, 2);
    if (time.nanoSeconds != 0)
        text += "." + padded(time.nanoSeconds, 9);
    if (time.offset)
        text += offsetText(*time.offset);
    return String(text);
}

Any make_date(const date_fields& fields) {
    if (!is_valid(fields))
        return failure(String(u"Invalid date: {}.").arg(text_of(fields)));
    return Any::adopt(new object_value_date(Date::getClass().record(), fields));
}

Any make_time(const time_fields& fields) {
    if (!isWithin(fields.fold, 0, 1))
        return failure(String(u"Invalid time: {}, fold {}.").arg(text_of(fields), fields.fold));
    if (!is_valid(fields))
        return failure(String(u"Invalid time: {}.").arg(text_of(fields)));
    return Any::adopt(new object_value_time(Time::getClass().record(), fields));
}

const date_fields& fields_of(const Date& date) noexcept {
    static const date_fields none{0, 0, 0};
    const bool hasValue = date.isHeap() && !is_error_result(date);
    return hasValue ? static_cast<const object_value_date*>(date.object())->fields : none;
}

const time_fields& fields_of(const Time& time) noexcept {
    static const time_fields& none = *new time_fields;
    const bool hasValue = time.isHeap() && !is_error_result(time);
    return hasValue ? static_cast<const object_value_time*>(time.object())->fields : none;
}

namespace {

/// Where a date or a time stands in the order: seconds in UTC, nanoseconds, and whether it says that it is UTC.
struct moment {
    std::int64_t seconds = 0;
    std::int64_t nanoSeconds = 0;
    std::int64_t hasOffset = 0;
    auto operator<=>(const moment&) const = default;
};

/// Days since the first of March of the year 0: years that begin in March have their leap day at the end.
std::int64_t dayNumber(const date_fields& date) noexcept {
    constexpr std::int64_t kDaysOfEra = 146'097;  // 400 years, after which the calendar repeats.
    const std::int64_t year = date.year - (date.month <= 2 ? 1 : 0);
    const std::int64_t month = (date.month + 9) % 12;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * month + 2) / 5 + date.day - 1;
    return era * kDaysOfEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
}

moment momentOf(const time_fields& time) noexcept {
    const std::int64_t seconds = (time.hour * 60 + time.minute) * 60 + time.second;
    return {seconds - time.offset.value_or(0), time.nanoSeconds, time.offset ? 1 : 0};
}

moment momentOf(const DateTime& dateTime) noexcept {
    moment result = momentOf(fields_of(dateTime.time()));
    result.seconds += dayNumber(fields_of(dateTime.date())) * kSecondsOfDay;
    return result;
}

int compare(const moment& a, const moment& b) noexcept { return a < b ? -1 : (b < a ? 1 : 0); }

std::int64_t hash(const moment& value) noexcept { return static_cast<std::int64_t>(hash_bytes(&value, sizeof value)); }

}  // namespace

int compare_dates(const Date& a, const Date& b) noexcept {
    return compare(moment{dayNumber(fields_of(a))}, moment{dayNumber(fields_of(b))});
}
int compare_times(const Time& a, const Time& b) noexcept {
    return compare(momentOf(fields_of(a)), momentOf(fields_of(b)));
}
int compare_date_times(const DateTime& a, const DateTime& b) noexcept { return compare(momentOf(a), momentOf(b)); }

std::int64_t hash_date(const Date& date) noexcept { return hash(moment{dayNumber(fields_of(date))}); }
std::int64_t hash_time(const Time& time) noexcept { return hash(momentOf(fields_of(time))); }
std::int64_t hash_date_time(const DateTime& dateTime) noexcept { return hash(momentOf(dateTime)); }

}  // namespace ling::internal
