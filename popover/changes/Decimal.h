// A decimal fraction with 19 places after the point, for sums that a double gets wrong in its last digits. Exact for
// every number of seconds that lies between two dates.
#pragma once

#include <QtGlobal>

#include <compare>

namespace quenby {

class Decimal {
public:
    constexpr Decimal() = default;
    // The decimal that the double is written as with the fewest digits: 59.9 becomes exactly 59.9. What lies beyond
    // ten to the sixteenth either way is held at it; what is no number becomes 0.
    static Decimal fromDouble(double value);

    Decimal times(qint32 factor) const { return Decimal(units_ * factor); }
    Decimal operator-(Decimal other) const { return Decimal(units_ - other.units_); }
    auto operator<=>(const Decimal&) const = default;

    // Truncated toward zero and held within 32 bits; dividing by 0 gives 0.
    qint32 dividedBy(Decimal divisor) const;

private:
    // A 128-bit integer is no part of the language's standard, but of every compiler that the project is built with.
    __extension__ using Units = __int128;

    constexpr explicit Decimal(Units units)
        : units_(units) {}

    Units units_ = 0; // of ten to the minus nineteenth
};

} // namespace quenby
