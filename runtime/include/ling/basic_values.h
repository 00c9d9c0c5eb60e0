#pragma once

#include "ling/any.h"
#include "ling/result.h"

namespace ling {

/// The value that is there to say that nothing is.
class LING_EXPORT None : public Any {
public:
    None() noexcept = default;
    static Result<None> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

/// The value of something that has no value, not even none: an operation that does not apply.
class LING_EXPORT Undefined : public Any {
public:
    Undefined() noexcept { tag_ = Tag::Undefined; }
    static Result<Undefined> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

class LING_EXPORT Boolean : public Any {
public:
    explicit Boolean(bool value = false) noexcept : Any(value) {}
    bool value() const noexcept { return asBoolean(); }
    static Result<Boolean> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

/// A signed integer of 64 bits.
class LING_EXPORT Integer : public Any {
public:
    explicit Integer(std::int64_t value = 0) noexcept : Any(value) {}
    std::int64_t value() const noexcept { return asInteger(); }
    static Result<Integer> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

/// A number in IEEE double precision. `cast` takes an integer too, since every place that wants a float can use it.
class LING_EXPORT Float : public Any {
public:
    explicit Float(double value = 0) noexcept : Any(value) {}
    double value() const noexcept { return asFloat(); }
    /// The shortest text that reads back as the same number, always recognisable as a float: "2.0", "1e+300",
    /// "nan", "inf".
    String toString() const;
    static Result<Float> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType();
};

}  // namespace ling
