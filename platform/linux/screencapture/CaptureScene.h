// What is drawn over the desktop's picture at one moment, and what of it is new since another one. All in pixels of the
// picture.
#pragma once

#include "platform/linux/screencapture/CaptureSelection.h"

#include <QRegion>
#include <QString>

#include <optional>

namespace quenby {

// Text on a dark plate.
struct CaptureLabel {
    QRect plate;
    QString text;
    int textHeight = 0; // of the font

    friend bool operator==(const CaptureLabel&, const CaptureLabel&) = default;
};

// The pixels around the pointer, enlarged, and where it is.
struct CaptureMagnifier {
    QRect frame; // with its edge; below the pixels there is a line of text
    QPoint pixel;
    int cell = 0; // the size of an enlarged pixel
    int textHeight = 0;
    int edge = 0;

    friend bool operator==(const CaptureMagnifier&, const CaptureMagnifier&) = default;
};

struct CaptureScene {
    // How many pixels around the pointer's own are enlarged, to each side.
    static constexpr int magnifiedReach = 8;

    std::optional<QRect> rectangle;
    bool isTinted = false; // a window or screen is meant, and not a region
    int line = 1;          // the width of each of the two lines around the rectangle
    std::optional<CaptureMagnifier> magnifier;
    std::optional<CaptureLabel> readout;
    std::optional<CaptureLabel> hint;

    friend bool operator==(const CaptureScene&, const CaptureScene&) = default;
};

// Needs the toolkit's fonts.
CaptureScene sceneOf(const CaptureSelection& selection);

// Where the two look different.
QRegion changedRegion(const CaptureScene& before, const CaptureScene& after);

// The font of all texts; the height is of its letters' line.
QFont captureFont(int textHeight);

} // namespace quenby
