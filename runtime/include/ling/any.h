#pragma once

#include "ling/identifier.h"
#include "ling/object_value.h"

#include <bit>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ling {

namespace internal {
/// Text that is no value of the runtime yet: literals, `std::string`, `std::string_view`, and their UTF-16 fellows.
template <class T>
concept utf8_text = std::convertible_to<const T&, std::string_view>;
template <class T>
concept utf16_text = std::convertible_to<const T&, std::u16string_view>;
/// An integer type whose values may be above what the runtime's integers hold.
template <class T>
concept wide_unsigned = std::unsigned_integral<T> && sizeof(T) >= sizeof(std::uint64_t);
}  // namespace internal

/// One value of the runtime, in 16 bytes: a tag and a payload.
///
/// None, undefined, booleans, integers and floats are immediate: copying them is copying 16 bytes. Everything else
/// is one counted reference to an `internal::object_value`. An `Any` owns its reference. Typed handles (`String`,
/// `List_Generic`, ...) derive from it and add nothing but their view, so a handle can be passed wherever an `Any`
/// is wanted. An error result is an ordinary value too: see `ling/error.h`.
///
/// Two threads may copy one `Any` at once; one may not assign to it while another reads it.
class LING_EXPORT Any {
public:
    Any() noexcept = default;  ///< The none value.
    template <std::same_as<bool> T>
    Any(T value) noexcept : tag_(Tag::Boolean), bits_(value) {}
    template <std::integral T>
    requires(!std::same_as<T, bool> && !internal::wide_unsigned<T>) Any(T value)
    noexcept : tag_(Tag::Integer), bits_(static_cast<std::uint64_t>(static_cast<std::int64_t>(value))) {}
    /// An integer, or above the greatest of them the decimal of the same value: no number changes on its way.
    template <internal::wide_unsigned T>
    Any(T value) : tag_(Tag::Integer), bits_(value) {
        if (bits_ > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            *this = ofLarge(std::exchange(bits_, 0));
    }
    template <std::floating_point T>
    Any(T value) noexcept : tag_(Tag::Float), bits_(std::bit_cast<std::uint64_t>(static_cast<double>(value))) {}
    /// A string.
    template <internal::utf8_text T>
    Any(const T& utf8) : Any(ofText(std::string_view(utf8))) {}
    template <internal::utf16_text T>
    Any(const T& units) : Any(ofText(std::u16string_view(units))) {}
    Any(std::nullptr_t) = delete;  ///< None is `Any()`.

    Any(const Any& other) noexcept : tag_(other.tag_), bits_(other.bits_) {
        if (tag_ == Tag::Heap)
            heap()->retain();
    }
    Any(Any&& other) noexcept : tag_(std::exchange(other.tag_, Tag::None)), bits_(std::exchange(other.bits_, 0)) {}
    Any& operator=(const Any& other) noexcept {
        Any copy(other);
        swap(copy);
        return *this;
    }
    Any& operator=(Any&& other) noexcept {
        Any taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~Any() {
        if (tag_ == Tag::Heap)
            heap()->release();
    }
    void swap(Any& other) noexcept {
        std::swap(tag_, other.tag_);
        std::swap(bits_, other.bits_);
    }

    /// Takes over one reference that the caller owns. Null gives none.
    static Any adopt(internal::object_value* object) noexcept {
        Any result;
        if (object != nullptr) {
            result.tag_ = Tag::Heap;
            result.bits_ = reinterpret_cast<std::uintptr_t>(object);
        }
        return result;
    }
    /// Adds a reference of its own to a borrowed object. Null gives none.
    static Any share(internal::object_value* object) noexcept {
        if (object != nullptr)
            object->retain();
        return adopt(object);
    }

    bool isNone() const noexcept { return tag_ == Tag::None; }
    bool isHeap() const noexcept { return tag_ == Tag::Heap; }
    /// What the value is made of. Must not be asked of none.
    Kind kind() const noexcept {
        return isHeap() ? heapObject()->kind() : kImmediateKinds[static_cast<unsigned>(tag_)];
    }
    /// False for none. With a constant it is one comparison for immediates, and the object is looked at for no other.
    bool is(Kind wanted) const noexcept {
        switch (wanted) {
            case Kind::Boolean:
                return tag_ == Tag::Boolean;
            case Kind::Integer:
                return tag_ == Tag::Integer;
            case Kind::Float:
                return tag_ == Tag::Float;
            case Kind::Undefined:
                return tag_ == Tag::Undefined;
            default:
                return isHeap() && heapObject()->kind() == wanted;
        }
    }

    /// Payloads. Each asserts nothing: ask the kind first.
    bool asBoolean() const noexcept { return bits_ != 0; }
    std::int64_t asInteger() const noexcept { return static_cast<std::int64_t>(bits_); }
    double asFloat() const noexcept { return std::bit_cast<double>(bits_); }
    /// The object pointed to, borrowed, or null for an immediate or none.
    internal::object_value* object() const noexcept { return isHeap() ? heap() : nullptr; }
    /// Gives the reference away: the caller owns it. Null for an immediate. The value becomes none.
    internal::object_value* take() noexcept;
    /// Tag and payload as one number: equal for values that are the same value or the same object.
    std::uint64_t rawBits() const noexcept { return bits_; }
    bool isSameAs(const Any& other) const noexcept { return tag_ == other.tag_ && bits_ == other.bits_; }

    /// The method `id` of this value with the value already bound as its first argument (a class-level method is
    /// given as it is). An error result when there is none. New reference; no lock needed or held.
    Any boundMethod(const method_ident_untyped& id) const;
    /// Calls the method `id` on this value without building a bound function. Its result, or an error result.
    Any callMethod(const method_ident_untyped& id, std::span<const Any> arguments) const;
    Any callMethod(const method_ident_untyped& id, std::initializer_list<Any> arguments = {}) const {
        return callMethod(id, std::span<const Any>(arguments.begin(), arguments.size()));
    }
    /// Reads the property `id`, running its getter. An error result when there is none.
    Any propertyValue(const property_ident_untyped& id) const;
    /// Runs the setter of the property `id`. None, or an error result.
    Any setPropertyValue(const property_ident_untyped& id, const Any& value) const;
    /// Reads and writes a declared field. An error result when the class declares no such field, or, on writing,
    /// when the value does not match the field's type.
    Any fieldValue(const field_ident_untyped& id) const;
    Any setFieldValue(const field_ident_untyped& id, const Any& value) const;

    /// The same by names as they are written. An identifier that is kept saves finding the name each time.
    Any boundMethod(std::string_view name) const { return boundMethod(internal::lookup_name(name).method()); }
    Any callMethod(std::string_view name, std::initializer_list<Any> arguments = {}) const {
        return callMethod(internal::lookup_name(name).method(), arguments);
    }
    Any propertyValue(std::string_view name) const { return propertyValue(internal::lookup_name(name).property()); }
    Any setPropertyValue(std::string_view name, const Any& value) const {
        return setPropertyValue(internal::lookup_name(name).property(), value);
    }

    static const Class_Generic& getClass();  ///< The root of every class.
    static Type getType();                   ///< The type that every value matches.

    // Operators. `x.callMethod(Any::$__sub__, {y})` is x - y.
    static const method_ident_untyped $__add__, $__sub__, $__mul__, $__div__;
    static const method_ident_untyped $__iadd__, $__isub__, $__imul__, $__idiv__;
    // What a class overrides to answer for its instances. `display`, `compare_objects`, `hash_of` ask these first.
    static const method_ident_untyped $__display__, $__compare__, $__hash__, $__init__;
    // The member protocol: a class that overrides these decides which members its instances have. They are called
    // with (self, name) or (self, name, member); look-ups answer the member or none, lists a list of members.
    static const method_ident_untyped $__method__, $__property__, $__ownMethod__, $__ownProperty__;
    static const method_ident_untyped $__ownMethods__, $__ownProperties__;
    static const method_ident_untyped $__insertMethod__, $__insertProperty__, $__removeMethod__, $__removeProperty__;

protected:
    internal::object_value* heapObject() const noexcept { return heap(); }

private:
    enum class Tag : std::uint64_t { None, Undefined, Boolean, Integer, Float, Heap };
    static constexpr Kind kImmediateKinds[] = {Kind::Undefined, Kind::Undefined, Kind::Boolean, Kind::Integer,
                                               Kind::Float};
    friend class Undefined;
    friend class internal::object_value_object;  // Reads fields while others may write them.

    static Any ofText(std::string_view utf8);
    static Any ofText(std::u16string_view units);
    static Any ofLarge(std::uint64_t value);
    internal::object_value* heap() const noexcept { return reinterpret_cast<internal::object_value*>(bits_); }

    Tag tag_ = Tag::None;
    std::uint64_t bits_ = 0;
};

static_assert(sizeof(Any) == 16);

inline internal::object_value* Any::take() noexcept {
    internal::object_value* taken = object();
    tag_ = Tag::None;
    bits_ = 0;
    return taken;
}

/// The handle `H` on a value that is already known to be one. Checks nothing.
template <std::derived_from<Any> H>
const H& unchecked(const Any& value) noexcept {
    static_assert(sizeof(H) == sizeof(Any));
    return static_cast<const H&>(value);
}

}  // namespace ling
