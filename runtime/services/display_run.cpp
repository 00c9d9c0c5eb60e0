#include "services/display_run.h"

#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/decimal.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/hash_containers.h"
#include "ling/module.h"
#include "ling/shown_values.h"
#include "ling/stack_room.h"
#include "services/class_answer.h"
#include "services/number_order.h"
#include "services/quoted_text.h"

#include <algorithm>
#include <charconv>

namespace ling::internal {

namespace {

/// As for comparison: how many levels may be open that came out of lazy or external values.
constexpr std::size_t kDeepestMade = 250'000;

void appendInteger(string_builder& out, std::int64_t value) {
    char digits[24];
    *std::to_chars(digits, digits + sizeof digits - 1, value).ptr = '\0';
    out.append(digits);
}

bool isText(const Any& value) {
    return value.is(Kind::String) ||
           (value.is(Kind::Object) && value.object()->ownClass() == String::getClass().record());
}

}  // namespace

String display_run::text(const Any& value) {
    const resolved_value resolved(value);
    if (isText(*resolved) && !class_answer(*resolved, Any::$__display__))
        return cutText(unchecked<String>(*resolved));
    write(*resolved);
    while (!levels_.empty())
        writeNext();
    return out_.build();
}

std::size_t display_run::roomFor(std::size_t wanted) const noexcept {
    return std::min(wanted, limit_ - std::min(limit_, out_.length()));
}

String display_run::cutText(const String& text) const {
    const std::size_t room = roomFor(text.length());
    return room == text.length() ? text : String(text.view().substr(0, room)) + String(u"...");
}

void display_run::writeText(const String& text) { out_.append(cutText(text)); }

void display_run::writeQuoted(std::u16string_view text) {
    const std::size_t room = roomFor(text.size());
    append_quoted(out_, text.substr(0, room));
    out_.append(room < text.size() ? "..." : "");
}

void display_run::writeBytes(std::string_view bytes) {
    const std::size_t room = roomFor(bytes.size());
    out_.append("b'").append(ByteArray(bytes.substr(0, room)).toString()).append(room < bytes.size() ? "'..." : "'");
}

/// The text that the class of the value gives for it, if any does. The stack may be too short for asking.
std::optional<String> display_run::ownText(const Any& value) {
    const found_member method = class_answer(value, Any::$__display__);
    if (!method)
        return std::nullopt;
    const shown_scope shown(value.object());
    if (!has_stack_room())
        walk_check::noteTooDeep();
    if (walk_check::isEnded() || !shown.isNew())
        return u"...";
    const Any answer = call_class(method, {value});
    Result<String> given = String::cast(answer);
    return given ? std::optional(*given) : std::nullopt;
}

void display_run::write(const Any& value) {
    const resolved_value resolved(value);
    made_ = resolved.isResolved();
    if (std::optional<String> own = ownText(*resolved))
        writeText(*own);
    else
        writeContent(*resolved);
}

void display_run::writeContent(const Any& value) {
    if (value.isNone()) {
        out_.append("none");
        return;
    }
    switch (value.kind()) {
        case Kind::Boolean:
            out_.append(value.asBoolean() ? "true" : "false");
            break;
        case Kind::Integer:
            appendInteger(out_, value.asInteger());
            break;
        case Kind::Float:
            out_.append(Float(value.asFloat()).toString());
            break;
        case Kind::Undefined:
            out_.append("undefined");
            break;
        case Kind::String:
            writeQuoted(unchecked<String>(value).view());
            break;
        case Kind::ByteArray:
            writeBytes(unchecked<ByteArray>(value).view());
            break;
        case Kind::List:
            open(value, {"[", "]", "]"}, Shape::Items, item_cursor(value));
            break;
        case Kind::Tuple:
            open(value, {"(", ")", ",)"}, Shape::Items, item_cursor(value));
            break;
        case Kind::Map:
            openMap(value);
            break;
        case Kind::Set:
            openSet(value);
            break;
        case Kind::Function:
            writeFunction(value);
            break;
        case Kind::Object:
        case Kind::Boxed:
        case Kind::External:
        case Kind::Lazy:
        case Kind::Weak:
            writeObject(value);
            break;
    }
}

void display_run::writeObject(const Any& value) {
    const bool isClass = value.object()->ownClass() == nullptr && value.is(Kind::Object);
    if (isText(value))
        writeQuoted(unchecked<String>(value).view());
    else if (is_number(value))
        writeText(unchecked<Decimal>(value).toString());
    else if (isClass || cast_object(value, Module::getClass()) != nullptr)
        out_.append(qualname(value));
    else if (Result<Error> error = Error::cast(value))
        writeText(error->message());
    else
        out_.append("<").append(qualname(raw_class_of(value))).append(">");
}

/// A function shows as it is declared, without types and defaults: a default may hold the function itself.
void display_run::writeFunction(const Any& value) {
    const auto& function = static_cast<const object_value_function&>(*value.object());
    out_.append(function.name());
    Result<Signature> signature = function.signature();
    out_.append(signature ? signature->toString(0) : String(u"()"));
}

void display_run::open(const Any& container, brackets around, Shape shape, item_cursor items) {
    shown_scope shown(container.object());
    if (made_ && madeLevels_ == kDeepestMade)
        walk_check::noteTooDeep();
    if (isFull() || !shown.isNew()) {
        out_.append("...");
        return;
    }
    out_.append(around.open);
    levels_.push_back({container, std::move(shown), std::move(items), shape, made_, around.close, around.closeSingle});
    madeLevels_ += made_ ? 1 : 0;
}

void display_run::openMap(const Any& map) {
    std::vector<Any> row;
    for (auto& [key, value] : static_cast<object_value_hash_map&>(*map.object()).copy_and_load_pairs(mostItems())) {
        row.push_back(std::move(key));
        row.push_back(std::move(value));
    }
    open(map, {"{", "}", "}"}, Shape::Pairs, item_cursor(std::move(row)));
}

/// An empty set must not look like an empty map.
void display_run::openSet(const Any& set) {
    std::vector<Any> items = static_cast<object_value_hash_set&>(*set.object()).copy_items(mostItems());
    if (items.empty())
        out_.append("Set()");
    else
        open(set, {"{", "}", "}"}, Shape::Items, item_cursor(std::move(items)));
}

void display_run::writeNext() {
    if (mustStop_())
        walk_check::noteInterrupted();
    level& innermost = levels_.back();
    Any item;
    const bool hasNext = innermost.items.next(item);
    const bool isCut = hasNext && isFull();
    if (!hasNext || isCut) {
        close(isCut);
        return;
    }
    const std::size_t before = innermost.written++;
    const bool isValue = innermost.shape == Shape::Pairs && before % 2 != 0;
    if (before != 0)
        out_.append(isValue ? ": " : ", ");
    write(item);
}

void display_run::close(bool isCut) {
    const level closed = std::move(levels_.back());
    levels_.pop_back();
    madeLevels_ -= closed.made ? 1 : 0;
    if (isCut) {
        const bool isValue = closed.shape == Shape::Pairs && closed.written % 2 != 0;
        out_.append(closed.written == 0 ? "..." : isValue ? ": ..." : ", ...");
    }
    out_.append(!isCut && closed.written == 1 ? closed.closeSingle : closed.close);
}

}  // namespace ling::internal
