// SPDX-License-Identifier: Apache-2.0
#include "host/Description.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <string>

#include "scene/Words.h"

namespace qx::host {
namespace {

constexpr std::uint32_t kMostParameters = 1000;
constexpr std::size_t kMostChoices = 1000;

using scene::BadText;

/// As names of effects, of parameters and of choices are spelled.
bool is_spelled(const char* name) {
    if (name == nullptr || *name < 'a' || *name > 'z') return false;
    return std::all_of(name, name + std::char_traits<char>::length(name),
                       [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-'; });
}

/// Checks one parameter; faults are told about it.
class ParameterCheck {
public:
    explicit ParameterCheck(const QXE_ParameterInfo& parameter)
        : p_(parameter), about_(std::string("parameter ") + parameter.name) {}

    void run() const {
        switch (p_.kind) {
            case QXE_KindNumber:
                return check_numbers(1);
            case QXE_KindPoint:
                return check_numbers(2);
            case QXE_KindWhole:
                check_range();
                return check(std::floor(p_.least) == p_.least && p_.least >= INT32_MIN && p_.most <= INT32_MAX &&
                                 within(p_.standard.whole),
                             kOutside);
            case QXE_KindSwitch:
                return check(p_.standard.whole == 0 || p_.standard.whole == 1, kOutside);
            case QXE_KindChoice:
                return check_choices();
            case QXE_KindColour:
                return check(std::all_of(p_.standard.numbers, p_.standard.numbers + 4,
                                         [](double c) { return std::isfinite(c); }),
                             kOutside);
            case QXE_KindText:
                return;
            default:
                fault("is of an unknown kind");
        }
    }

private:
    static constexpr const char* kOutside = "has a default outside its range";

    [[noreturn]] void fault(const char* words) const { throw BadText(about_, words); }
    void check(bool holds, const char* words) const {
        if (!holds) fault(words);
    }
    bool within(double x) const { return x >= p_.least && x <= p_.most; }
    void check_range() const {
        check(std::isfinite(p_.least) && std::isfinite(p_.most) && p_.least <= p_.most, "has no range");
    }
    void check_numbers(int count) const {
        check_range();
        for (int i = 0; i < count; ++i) check(within(p_.standard.numbers[i]), kOutside);
    }
    void check_choices() const {
        check(p_.choices != nullptr && p_.choices[0] != nullptr, "has nothing to choose from");
        std::size_t count = 0;
        for (; p_.choices[count] != nullptr; ++count) {
            check(is_spelled(p_.choices[count]) && count < kMostChoices, "has a choice that is no name");
        }
        check(p_.standard.whole >= 0 && static_cast<std::size_t>(p_.standard.whole) < count, kOutside);
    }

    const QXE_ParameterInfo& p_;
    const std::string about_;
};

}  // namespace

std::vector<const QXE_ParameterInfo*> checked_parameters(const QXE_EffectInfo& info) {
    const auto check = [](bool holds, const char* words) {
        if (!holds) throw BadText("its description", words);
    };
    check(is_spelled(info.name), "has no name of letters a to z, digits and -");
    check((info.depths & QXE_AnyDepth) != 0, "takes no depth");
    check(info.render != nullptr, "has no function render");
    check(info.parameter_count <= kMostParameters, "has too many parameters");
    check(info.parameter_count == 0 || info.parameters != nullptr, "counts parameters and has none");
    std::vector<const QXE_ParameterInfo*> parameters;
    std::set<std::string> names;
    const auto* at = reinterpret_cast<const std::byte*>(info.parameters);
    for (std::uint32_t i = 0; i < info.parameter_count; ++i) {
        const auto& parameter = *reinterpret_cast<const QXE_ParameterInfo*>(at);
        check(parameter.size >= sizeof parameter, "has a parameter of another size than its version's");
        check(is_spelled(parameter.name), "has a parameter without a name of letters a to z, digits and -");
        if (!names.insert(parameter.name).second)
            throw BadText(std::string("parameter ") + parameter.name, "is there twice");
        ParameterCheck(parameter).run();
        parameters.push_back(&parameter);
        at += parameter.size;
    }
    return parameters;
}

}  // namespace qx::host
