// Draws a scene over the desktop's picture. Threads: the main thread.
#pragma once

#include "platform/linux/screencapture/CaptureScene.h"

#include <QImage>

class QPainter;

namespace quenby {

// A part of the desktop as the user sees it: the picture, darker outside of the chosen rectangle, and what is drawn
// over it.
QImage paintedScene(const CaptureScene& scene, const QImage& picture, const QRect& part);

// MagnifierPainter.cpp
void paintMagnifier(QPainter& painter, const CaptureMagnifier& magnifier, const QImage& picture);
// A plate to write on: dark enough for white text, whatever lies below.
inline constexpr QRgb capturePlateColor = qRgba(24, 26, 30, 226);

} // namespace quenby
