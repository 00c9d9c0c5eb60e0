#include "services/display_run.h"

#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/decimal.h"
#include "ling/error.h"
#include "ling/function.h"
#include "ling/hash_containers.h"
#include "ling/module.h"
#include "services/class_answer.h"
#include "services/number_order.h"
#include "services/quoted_text.h"

#include <charconv>

namespace ling::internal {

namespace {

/// As for comparison: only a value that makes its items while it is walked is this deep.
constexpr std::size_t kDeepest = 250'000;

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
        return unchecked<String>(*resolved);
    write(*resolved);
    while (!levels_.empty())
        writeNext();
    return out_.build();
}

/// The text that the class of the value gives for it, if any does.
std::optional<String> display_run::ownText(const Any& value) {
    const found_member method = class_answer(value, Any::$__display__);
    if (!method)
        return std::nullopt;
    shown_.insert(value.object());
    const Any answer = ask_class(method, {value});
    shown_.erase(value.object());
    Result<String> given = String::cast(answer);
    return given ? std::optional(*given) : std::nullopt;
}

bool display_run::isBeingShown(const object_value* object) const {
    for (const display_run* run = this; run != nullptr; run = run->outer_)
        if (run->shown_.contains(object))
            return true;
    return false;
}

void display_run::write(const Any& value) {
    const resolved_value resolved(value);
    if (isBeingShown((*resolved).object()) || levels_.size() == kDeepest)
        out_.append("...");
    else if (std::optional<String> own = ownText(*resolved))
        out_.append(*own);
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
            append_quoted(out_, unchecked<String>(value).view());
            break;
        case Kind::ByteArray:
            out_.append("b'").append(unchecked<ByteArray>(value).toString()).append("'");
            break;
        case Kind::List:
            open(value, "[", {value, item_cursor(value), Shape::Items, "]", "]"});
            break;
        case Kind::Tuple:
            open(value, "(", {value, item_cursor(value), Shape::Items, ")", ",)"});
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
        append_quoted(out_, unchecked<String>(value).view());
    else if (is_number(value))
        out_.append(unchecked<Decimal>(value).toString());
    else if (isClass || cast_object(value, Module::getClass()) != nullptr)
        out_.append(qualname(value));
    else if (Result<Error> error = Error::cast(value))
        out_.append(error->message());
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

void display_run::open(const Any& container, const char* opening, level opened) {
    out_.append(opening);
    shown_.insert(container.object());
    levels_.push_back(std::move(opened));
}

void display_run::openMap(const Any& map) {
    std::vector<Any> row;
    for (auto& [key, value] : static_cast<object_value_hash_map&>(*map.object()).copy_and_load_pairs()) {
        row.push_back(std::move(key));
        row.push_back(std::move(value));
    }
    open(map, "{", {map, item_cursor(std::move(row)), Shape::Pairs, "}", "}"});
}

/// An empty set must not look like an empty map.
void display_run::openSet(const Any& set) {
    std::vector<Any> items = static_cast<object_value_hash_set&>(*set.object()).copy_items();
    if (items.empty())
        out_.append("Set()");
    else
        open(set, "{", {set, item_cursor(std::move(items)), Shape::Items, "}", "}"});
}

void display_run::writeNext() {
    level& innermost = levels_.back();
    Any item;
    if (!innermost.items.next(item)) {
        out_.append(innermost.written == 1 ? innermost.closeSingle : innermost.close);
        shown_.erase(innermost.container.object());
        levels_.pop_back();
        return;
    }
    const std::size_t before = innermost.written++;
    const bool isValue = innermost.shape == Shape::Pairs && before % 2 != 0;
    if (before != 0)
        out_.append(isValue ? ": " : ", ");
    write(item);
}

}  // namespace ling::internal
