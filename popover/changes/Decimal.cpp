#include "popover/changes/Decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace quenby {
namespace {

constexpr int places = 19;
constexpr double largest = 1e16;

} // namespace

Decimal Decimal::fromDouble(double value) {
    if (std::isnan(value))
        return {};
    char text[32]; // for example -1.2345e-05
    const auto written =
        std::to_chars(text, text + sizeof text, std::clamp(value, -largest, largest), std::chars_format::scientific);
    Units units = 0;
    int exponent = 0;
    bool isNegative = false;
    bool isFraction = false;
    for (const char* at = text; at != written.ptr; ++at) {
        if (*at == 'e') {
            int read = 0;
            std::from_chars(at[1] == '+' ? at + 2 : at + 1, written.ptr, read);
            exponent += read;
            break;
        }
        if (*at == '-') {
            isNegative = true;
        } else if (*at == '.') {
            isFraction = true;
        } else {
            units = units * 10 + (*at - '0');
            exponent -= isFraction ? 1 : 0;
        }
    }
    for (exponent += places; exponent > 0 && units != 0; --exponent)
        units *= 10;
    for (; exponent < 0 && units != 0; ++exponent)
        units /= 10;
    return Decimal(isNegative ? -units : units);
}

qint32 Decimal::dividedBy(Decimal divisor) const {
    if (divisor.units_ == 0)
        return 0;
    using Limits = std::numeric_limits<qint32>;
    return static_cast<qint32>(std::clamp<Units>(units_ / divisor.units_, Limits::min(), Limits::max()));
}

} // namespace quenby
