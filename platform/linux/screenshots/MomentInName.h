// Reads the moment out of a file's name: "Screenshot from 2026-11-23 10-41-56". Tools write it in local time.
//
// A form is a text with these places in it:
//   %Y %m %d %H %M %S   year, month, day, hour, minute, second, with leading zeros
//   %s                  the seconds since 1970, instead of those
//   %n                  any number
//   %z                  an offset from UTC, such as +01:00
//   %w                  the word for "screenshot" in one of the desktops' languages
//   %a                  any words: letters, spaces and what stands between words, but no digits and no brackets
// Letters are matched in either case. The number that a tool adds when there is such a file already ("-1", "_001",
// " - 1") may follow; what file managers and browsers add (" (1)", " (copy)") may not.
//
// Threads: any.
#pragma once

#include <QDateTime>
#include <QStringView>

#include <chrono>
#include <optional>

namespace quenby {

struct NamedMoment {
    QDateTime begin;             // what a clock on the wall of this time zone shows, put down as if it were UTC
    std::chrono::seconds length; // a minute when the name tells no seconds
};

// How far a moment lies behind the beginning of what the name tells, in local time; negative when it lies before.
std::chrono::milliseconds delaySince(const NamedMoment& named, const QDateTime& moment);

// The forms are separated by "|"; the first that fits counts.
std::optional<NamedMoment> momentInName(QStringView stem, QStringView forms);

} // namespace quenby
