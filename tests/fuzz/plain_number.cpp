// SPDX-License-Identifier: MIT
#include "fuzz/plain_number.h"

#include <algorithm>

namespace orvanta::fuzz {
namespace {

bool isZero(char digit) {
    return digit == '0';
}

/// The power of ten after the "e", kept within bounds that no input is long enough to make up for.
long exponentOf(const std::string& text) {
    constexpr long kEnough = 10'000'000;
    long exponent = 0;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            exponent = std::min(exponent * 10 + (c - '0'), kEnough);
        }
    }
    return text.starts_with('-') ? -exponent : exponent;
}

} // namespace

std::optional<std::int64_t> plainDigits(bool isNegative, const std::string& digits) {
    std::int64_t value = 0;
    for (const char digit : digits) {
        const int step = isNegative ? '0' - digit : digit - '0';
        if (__builtin_mul_overflow(value, 10, &value) ||
            __builtin_add_overflow(value, step, &value)) {
            return std::nullopt;
        }
    }
    return value;
}

std::optional<std::int64_t> plainInteger(const std::string& number) {
    const bool isNegative = number.starts_with('-');
    const std::string magnitude = number.substr(isNegative ? 1 : 0);
    const std::size_t exponentAt = std::min(magnitude.find_first_of("eE"), magnitude.size());
    const std::string mantissa = magnitude.substr(0, exponentAt);
    const std::size_t pointAt = std::min(mantissa.find('.'), mantissa.size());
    std::string whole = mantissa.substr(0, pointAt);
    std::string fraction = pointAt < mantissa.size() ? mantissa.substr(pointAt + 1) : "";
    if (std::all_of(whole.begin(), whole.end(), isZero) &&
        std::all_of(fraction.begin(), fraction.end(), isZero)) {
        return 0;
    }
    // The point is moved digit by digit; 40 digits of zeros more or less change nothing any more.
    long exponent =
        exponentAt < magnitude.size() ? exponentOf(magnitude.substr(exponentAt + 1)) : 0;
    const long mostSteps = static_cast<long>(mantissa.size()) + 40;
    exponent = std::clamp(exponent, -mostSteps, mostSteps);
    for (; exponent > 0; --exponent) {
        whole += fraction.empty() ? '0' : fraction.front();
        fraction.erase(0, 1);
    }
    for (; exponent < 0; ++exponent) {
        fraction.insert(fraction.begin(), whole.empty() ? '0' : whole.back());
        whole.erase(whole.empty() ? 0 : whole.size() - 1);
    }
    const bool hasFraction = !std::all_of(fraction.begin(), fraction.end(), isZero);
    return hasFraction ? std::nullopt : plainDigits(isNegative, whole);
}

} // namespace orvanta::fuzz
