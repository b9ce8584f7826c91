// Where the words of a slide or drawing stand: the same in a picture, in SVG and in a PDF.
#pragma once

#include "localdrive/server/docs/NativeContent.h"

#include <QFont>
#include <QList>
#include <QString>

namespace quenby::localdrive {

struct SlideLine {
    QString text;
    int x = 0; // pixels, from the left
    int y = 0; // of the line the letters stand on, from the top
    int fontSize = 0;
    bool isTitle = false;
};

struct SlideLayout {
    static constexpr int width = 960;
    static constexpr int usualHeight = 540;

    int height = usualHeight; // more for slides with more text than fits even in small letters
    QList<SlideLine> lines;
};

// Threads: any, in a program with a QGuiApplication.
SlideLayout layoutOf(const Section& section);

QFont slideFont(const SlideLine& line);

} // namespace quenby::localdrive
