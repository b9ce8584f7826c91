// How dark it is around the status item.
#pragma once

#include <QPalette>

namespace quenby {

// A panel does not tell its colours; the desktop's palette is the best guess there is.
inline bool isDark(const QPalette& palette) {
    return palette.color(QPalette::WindowText).lightness() > palette.color(QPalette::Window).lightness();
}

} // namespace quenby
