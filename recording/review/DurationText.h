// The length of a recording in words and in digits.
#pragma once

#include <QString>

#include <chrono>

namespace quenby {

// " 1 minute  1 second": numbers below ten have a leading space, and the plural of every part follows the seconds. A
// negative length is none.
QString stringFromTimeInterval(double seconds);

// "0:07", "12:34", "1:02:03".
QString clockText(std::chrono::milliseconds time);

} // namespace quenby
