#include "ling/date_time.h"

#include "library/date_time_value.h"
#include "ling/class.h"
#include "ling/error.h"
#include "ling/interfaces.h"

#include <typeinfo>

namespace ling {

using internal::fields_of;

namespace {

/// A class may derive from one of these and keep its instances in another form; only the form tells.
template <class Storage, class Handle>
Result<Handle> castStored(const Any& value) {
    const internal::object_value* object = value.object();
    if (object != nullptr && typeid(*object) == typeid(Storage))
        return unchecked<Handle>(value);
    return Result<Handle>::failure(internal::cast_error(value, Handle::getClass()));
}

const internal::object_value_date_time* recordOf(const DateTime& dateTime) noexcept {
    const bool hasValue = dateTime.isHeap() && !internal::is_error_result(dateTime);
    return hasValue ? static_cast<const internal::object_value_date_time*>(dateTime.object()) : nullptr;
}

}  // namespace

Date::Date(int year, unsigned char month, unsigned char day) : Date(internal::make_date({year, month, day})) {}

int Date::year() const noexcept { return static_cast<int>(fields_of(*this).year); }
unsigned char Date::month() const noexcept { return static_cast<unsigned char>(fields_of(*this).month); }
unsigned char Date::day() const noexcept { return static_cast<unsigned char>(fields_of(*this).day); }
String Date::toString() const { return internal::text_of(fields_of(*this)); }

Result<Date> Date::cast(const Any& value) { return castStored<internal::object_value_date, Date>(value); }
const Class_Generic& Date::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("Date", {I_Immutable::getClass()}));
    return cls;
}
Type Date::getType() { return Type(getClass()); }

Time::Time(unsigned char hour, unsigned char minute, unsigned char second, unsigned int nanoSeconds)
    : Time(internal::make_time({hour, minute, second, nanoSeconds, std::nullopt, String(), 0})) {}
Time::Time(unsigned char hour, unsigned char minute, unsigned char second, unsigned int nanoSeconds,
           std::int64_t offset, const String& zoneName, unsigned char fold)
    : Time(internal::make_time({hour, minute, second, nanoSeconds, offset, zoneName, fold})) {}

unsigned char Time::hour() const noexcept { return static_cast<unsigned char>(fields_of(*this).hour); }
unsigned char Time::minute() const noexcept { return static_cast<unsigned char>(fields_of(*this).minute); }
unsigned char Time::second() const noexcept { return static_cast<unsigned char>(fields_of(*this).second); }
unsigned int Time::nanoSeconds() const noexcept { return static_cast<unsigned>(fields_of(*this).nanoSeconds); }
bool Time::hasOffset() const noexcept { return fields_of(*this).offset.has_value(); }
std::int64_t Time::offset() const noexcept { return fields_of(*this).offset.value_or(0); }
String Time::zoneName() const { return fields_of(*this).zoneName; }
unsigned char Time::fold() const noexcept { return static_cast<unsigned char>(fields_of(*this).fold); }
String Time::toString() const { return internal::text_of(fields_of(*this)); }

Result<Time> Time::cast(const Any& value) { return castStored<internal::object_value_time, Time>(value); }
const Class_Generic& Time::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("Time", {I_Immutable::getClass()}));
    return cls;
}
Type Time::getType() { return Type(getClass()); }

namespace {

/// The first of the parts that is no value, or the whole.
Any makeDateTime(const Date& date, const Time& time) {
    if (internal::is_error_result(date))
        return date;
    if (internal::is_error_result(time))
        return time;
    return Any::adopt(new internal::object_value_date_time(DateTime::getClass().record(), date, time));
}

}  // namespace

DateTime::DateTime(const Date& date, const Time& time) : Any(makeDateTime(date, time)) {}

Date DateTime::date() const {
    const internal::object_value_date_time* record = recordOf(*this);
    return record != nullptr ? record->date : Date(Any());
}
Time DateTime::time() const {
    const internal::object_value_date_time* record = recordOf(*this);
    return record != nullptr ? record->time : Time(Any());
}
String DateTime::toString() const { return date().toString() + String(u"T") + time().toString(); }

Result<DateTime> DateTime::cast(const Any& value) {
    return castStored<internal::object_value_date_time, DateTime>(value);
}
const Class_Generic& DateTime::getClass() {
    static const Class_Generic& cls = *new Class_Generic(internal::native_class("DateTime", {I_Immutable::getClass()}));
    return cls;
}
Type DateTime::getType() { return Type(getClass()); }

}  // namespace ling
