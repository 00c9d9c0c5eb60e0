#pragma once

#include "library/decimal_number.h"
#include "ling/class_record.h"
#include "ling/decimal.h"

#include <utility>

namespace ling {

namespace internal {

/// The storage of a decimal.
class object_value_decimal final : public object_value_object {
public:
    object_value_decimal(object_value_class* klass, decimal_number itsNumber)
        : object_value_object(klass), number(std::move(itsNumber)) {}
    const decimal_number number;
};

}  // namespace internal

/// Makes handles out of numbers, and gets the numbers back.
struct decimal_access {
    static Any adopt(internal::decimal_number number,
                     internal::object_value_class* klass = Decimal::getClass().record());
    /// A handle that was moved from reads as zero.
    static const internal::decimal_number& number(const Any& decimal) noexcept;
};

}  // namespace ling
