// SPDX-License-Identifier: Apache-2.0
#include "scene/Rational.h"

#include <charconv>
#include <limits>
#include <stdexcept>
#include <utility>

#include "scene/Words.h"

namespace qx::scene {
namespace {

constexpr std::size_t kMostDigits = 18;  // of either part; with more a power of ten would not fit

std::int64_t digits(const std::string& text, const std::string& part) {
    std::int64_t number = 0;
    const auto parsed = std::from_chars(part.data(), part.data() + part.size(), number);
    const bool all = parsed.ec == std::errc() && parsed.ptr == part.data() + part.size();
    if (all && part[0] != '-' && part.size() <= kMostDigits) return number;
    throw BadText(text, "not a number such as 60, 24000/1001 or 23.976");
}

Rational parsed(const std::string& text) {
    const bool negative = text.starts_with('-');
    const std::string rest = text.substr(negative ? 1 : 0);
    const Rational sign(negative ? -1 : 1);
    if (const auto slash = rest.find('/'); slash != std::string::npos) {
        const std::int64_t per = digits(text, rest.substr(slash + 1));
        if (per == 0) throw BadText(text, "has a zero below its line");
        return sign * Rational(digits(text, rest.substr(0, slash)), per);
    }
    const auto dot = rest.find('.');
    if (dot == std::string::npos) return sign * Rational(digits(text, rest));
    const std::string fraction = rest.substr(dot + 1);
    std::int64_t per = 1;
    for (std::size_t i = 0; i < fraction.size() && i < kMostDigits; ++i) per *= 10;
    const Rational whole(dot == 0 ? 0 : digits(text, rest.substr(0, dot)));
    return sign * (whole + Rational(digits(text, fraction), per));
}

}  // namespace

Rational Rational::in_lowest_terms(Wide number, Wide per) {
    Wide a = number < 0 ? -number : number, b = per < 0 ? -per : per;
    while (b != 0) a = std::exchange(b, a % b);
    if (per < 0) a = -a;
    number /= a;
    per /= a;
    constexpr Wide most = std::numeric_limits<std::int64_t>::max();
    if (number > most || number < -most || per > most) throw std::overflow_error("a number of too many digits");
    Rational lowest;
    lowest.number_ = static_cast<std::int64_t>(number);
    lowest.per_ = static_cast<std::int64_t>(per);
    return lowest;
}

Rational rational_of_text(const std::string& text) {
    try {
        return parsed(text);
    } catch (const std::overflow_error&) {
        throw BadText(text, "has too many digits");
    }
}

std::string words(const Rational& number) {
    const std::string whole = std::to_string(number.number());
    return number.per() == 1 ? whole : whole + "/" + std::to_string(number.per());
}

}  // namespace qx::scene
