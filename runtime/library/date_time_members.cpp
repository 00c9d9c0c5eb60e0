#include "interfaces/optional_method.h"
#include "library/date_time_value.h"
#include "library/define.h"
#include "library/native_constructor.h"
#include "ling/class_builder.h"
#include "ling/error.h"

namespace ling::internal {

namespace {

object_value* copyDate(const Any& value, object_value_class* derived) {
    return new object_value_date(derived, fields_of(unchecked<Date>(value)));
}
object_value* copyTime(const Any& value, object_value_class* derived) {
    return new object_value_time(derived, fields_of(unchecked<Time>(value)));
}
object_value* copyDateTime(const Any& value, object_value_class* derived) {
    const DateTime& dateTime = unchecked<DateTime>(value);
    return new object_value_date_time(derived, dateTime.date(), dateTime.time());
}

Any makeDate(std::int64_t year, std::int64_t month, std::int64_t day) { return make_date({year, month, day}); }

Any makeTime(std::int64_t hour, std::int64_t minute, std::int64_t second, std::int64_t nanoSeconds, const Any& offset,
             const String& zoneName, std::int64_t fold) {
    time_fields fields{hour, minute, second, nanoSeconds, std::nullopt, zoneName, fold};
    if (!offset.isNone()) {
        const Result<Integer> seconds = Integer::cast(offset);
        if (!seconds)
            return seconds.error();
        fields.offset = seconds->value();
    }
    return make_time(fields);
}

FunctionCL_Generic timeMaker() {
    FunctionCL_Generic make =
        make_function("Time", "hour, minute, second, nanoSeconds, offset, zoneName, fold", &makeTime);
    make.setParameterDefaults({0, 0, Any(), String(), 0});
    return make;
}

const native_constructor& dateConstructor() {
    static const native_constructor& constructor = *new native_constructor{
        Date::getClass(), make_function("Date", "year, month, day", &makeDate), make_date({}), &copyDate};
    return constructor;
}

const native_constructor& timeConstructor() {
    static const native_constructor& constructor =
        *new native_constructor{Time::getClass(), timeMaker(), make_time({}), &copyTime};
    return constructor;
}

const native_constructor& dateTimeConstructor() {
    static const native_constructor& constructor = *new native_constructor{
        DateTime::getClass(),
        make_function("DateTime", "date, time",
                      [](const Date& date, const Time& time) -> Any { return DateTime(date, time); }),
        DateTime(unchecked<Date>(make_date({})), unchecked<Time>(make_time({}))), &copyDateTime};
    return constructor;
}

/// What all three classes answer for display, order and hash.
template <class Handle>
void defineValueMembers(int (*compare)(const Handle&, const Handle&) noexcept,
                        std::int64_t (*hash)(const Handle&) noexcept) {
    extend_class(Handle::getClass())
        .method(
            "toString", "", [](const Handle& self) { return self.toString(); }, "The value in the form of ISO 8601.")
        .method(
            Any::$__display__, "", [](const Handle& self) { return self.toString(); },
            "The value in the form of ISO 8601.")
        .method(
            Any::$__compare__, "other",
            [compare](const Handle& self, const Any& other) -> Any {
                const Result<Handle> value = Handle::cast(other);
                return value ? Any(compare(self, *value)) : value.error();
            },
            "Negative, zero or positive: earlier, the same or later.")
        .method(
            Any::$__hash__, "", [hash](const Handle& self) { return hash(self); },
            "A number that equal values have in common.")
        .build();
}

/// A property that a getter of the handle answers.
template <class Getter>
property_builder reading(Getter&& getter, std::string_view doc) {
    property_builder builder;
    builder.getter(std::forward<Getter>(getter)).doc(doc);
    return builder;
}

void defineDate() {
    extend_class(Date::getClass())
        .doc("A day of the Gregorian calendar, which is taken to have been in use always.")
        .hooks(constructor_hooks<&dateConstructor>())
        .method(Any::$__init__, dateConstructor().initialiser())
        .property("year", reading([](const Date& self) { return self.year(); }, "The year, 0 and below included."))
        .property("month", reading([](const Date& self) { return self.month(); }, "The month, from 1."))
        .property("day", reading([](const Date& self) { return self.day(); }, "The day of the month, from 1."))
        .build();
    defineValueMembers<Date>(&compare_dates, &hash_date);
}

void defineTime() {
    extend_class(Time::getClass())
        .doc("A time of day to the nanosecond, perhaps with its offset from UTC.")
        .hooks(constructor_hooks<&timeConstructor>())
        .method(Any::$__init__, timeConstructor().initialiser())
        .property("hour", reading([](const Time& self) { return self.hour(); }, "The hour, from 0 to 23."))
        .property("minute", reading([](const Time& self) { return self.minute(); }, "The minute."))
        .property("second", reading([](const Time& self) { return self.second(); }, "The second, from 0 to 59."))
        .property("nanoSeconds",
                  reading([](const Time& self) { return self.nanoSeconds(); }, "The fraction of the second."))
        .property("offset", reading([](const Time& self) { return self.hasOffset() ? Any(self.offset()) : Any(); },
                                    "The offset from UTC in seconds, positive in the east, or none."))
        .property("zoneName",
                  reading([](const Time& self) { return self.zoneName(); }, "The name of the time zone, or empty."))
        .property("fold", reading([](const Time& self) { return self.fold(); },
                                  "1 for the second of two equal readings of a clock that was set back, else 0."))
        .build();
    defineValueMembers<Time>(&compare_times, &hash_time);
}

void defineDateTime() {
    extend_class(DateTime::getClass())
        .doc("A date and a time of day.")
        .hooks(constructor_hooks<&dateTimeConstructor>())
        .method(Any::$__init__, dateTimeConstructor().initialiser())
        .property("date", reading([](const DateTime& self) { return self.date(); }, "The date alone."))
        .property("time", reading([](const DateTime& self) { return self.time(); }, "The time of day alone."))
        .build();
    defineValueMembers<DateTime>(&compare_date_times, &hash_date_time);
}

}  // namespace

void define_date_time_members() {
    defineDate();
    defineTime();
    defineDateTime();
}

}  // namespace ling::internal
