// The command line of quenby-screencapture: -i PATH. Nothing else is understood.
#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace quenby {

inline constexpr char captureUsage[] =
    "usage: quenby-screencapture -i PATH\n"
    "Lets you choose a part of the screen, and saves its picture (PNG) at PATH. A cancelled choice saves nothing.\n";

// Where the picture is to be; nothing when the words after the program's name are others than these.
inline std::optional<QByteArray> capturePath(const QList<QByteArray>& words) {
    if (words.size() != 2 || words.first() != "-i" || words.last().isEmpty() || words.last().endsWith('/'))
        return std::nullopt;
    return words.last();
}

} // namespace quenby
