#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include <gmp.h>

namespace ling::internal {

/// An integer of any size, as decimal arithmetic needs it.
class big_integer {
public:
    big_integer() { mpz_init(value_); }
    explicit big_integer(std::uint64_t value) { mpz_init_set_ui(value_, value); }
    explicit big_integer(const std::string& digits) { mpz_init_set_str(value_, digits.c_str(), 10); }
    big_integer(big_integer&& other) noexcept : big_integer() { mpz_swap(value_, other.value_); }
    big_integer& operator=(big_integer&& other) noexcept {
        mpz_swap(value_, other.value_);
        return *this;
    }
    big_integer(const big_integer&) = delete;
    big_integer& operator=(const big_integer&) = delete;
    ~big_integer() { mpz_clear(value_); }

    static big_integer power(std::uint64_t base, std::uint64_t exponent) {
        big_integer result;
        mpz_ui_pow_ui(result.value_, base, exponent);
        return result;
    }

    void add(const big_integer& other) { mpz_add(value_, value_, other.value_); }
    void add(std::uint64_t other) { mpz_add_ui(value_, value_, other); }
    void multiply(const big_integer& other) { mpz_mul(value_, value_, other.value_); }
    void negate() { mpz_neg(value_, value_); }
    /// Divides, towards zero, and answers what remains.
    big_integer divide(const big_integer& divisor) {
        big_integer remainder;
        mpz_tdiv_qr(value_, remainder.value_, value_, divisor.value_);
        return remainder;
    }

    bool isZero() const { return mpz_sgn(value_) == 0; }
    bool isNegative() const { return mpz_sgn(value_) < 0; }
    bool isMultipleOf(std::uint64_t divisor) const { return mpz_divisible_ui_p(value_, divisor) != 0; }
    /// The digits of the magnitude.
    std::string digits() const {
        std::string text(mpz_sizeinbase(value_, 10) + 2, '\0');
        mpz_get_str(text.data(), 10, value_);
        text.resize(text.find('\0'));
        return isNegative() ? text.substr(1) : text;
    }

private:
    mpz_t value_;
};

}  // namespace ling::internal
