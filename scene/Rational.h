// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace qx::scene {

/// An exact number, in lowest terms, for times and rates. What does not fit 64 bits throws std::overflow_error.
class Rational {
public:
    constexpr Rational() = default;
    constexpr Rational(std::int64_t whole) : number_(whole) {}  // NOLINT: a whole number is one
    /// @param per  not 0
    Rational(std::int64_t number, std::int64_t per) : Rational(in_lowest_terms(number, per)) {}

    std::int64_t number() const { return number_; }
    std::int64_t per() const { return per_; }  ///< above 0
    std::int64_t floor() const { return number_ / per_ - (number_ % per_ < 0 ? 1 : 0); }
    double real() const { return static_cast<double>(number_) / static_cast<double>(per_); }

    friend Rational operator+(const Rational& a, const Rational& b) {
        return in_lowest_terms(Wide{a.number_} * b.per_ + Wide{b.number_} * a.per_, Wide{a.per_} * b.per_);
    }
    friend Rational operator-(const Rational& a, const Rational& b) {
        return in_lowest_terms(Wide{a.number_} * b.per_ - Wide{b.number_} * a.per_, Wide{a.per_} * b.per_);
    }
    friend Rational operator*(const Rational& a, const Rational& b) {
        return in_lowest_terms(Wide{a.number_} * b.number_, Wide{a.per_} * b.per_);
    }
    /// @param b  not 0
    friend Rational operator/(const Rational& a, const Rational& b) {
        return in_lowest_terms(Wide{a.number_} * b.per_, Wide{a.per_} * b.number_);
    }
    friend bool operator==(const Rational&, const Rational&) = default;
    friend std::strong_ordering operator<=>(const Rational& a, const Rational& b) {
        return Wide{a.number_} * b.per_ <=> Wide{b.number_} * a.per_;
    }

private:
    __extension__ using Wide = __int128;  // holds products, and sums of two of numbers below 2 to the power of 63
    static Rational in_lowest_terms(Wide number, Wide per);
    std::int64_t number_ = 0, per_ = 1;
};

/// "60", "24000/1001" or "23.976", which is 2997/125. Throws BadText.
Rational rational_of_text(const std::string& text);
/// "24000/1001", or "60" for a whole number.
std::string words(const Rational& number);

}  // namespace qx::scene
