// Slides and drawings as pictures, and documents as pages to print.
//
// Threads: any, in a program with a QGuiApplication.
#pragma once

#include "localdrive/server/docs/NativeContent.h"

#include <QByteArray>

namespace quenby::localdrive {

// All sections in one picture, below each other. `format` is "png" or "jpeg". Null when there is no memory for it.
QByteArray picture(const NativeContent& content, const char* format);
QByteArray svg(const NativeContent& content);
// A page for each section, as large as the slide.
QByteArray slidesPdf(const QString& title, const NativeContent& content);
// Texts and tables on sheets of A4.
QByteArray sheetsPdf(const QString& title, const NativeContent& content);

} // namespace quenby::localdrive
