// Writes pictures as PNG, without a toolkit for pictures.
#pragma once

#include <QByteArray>

namespace quenby::localdrive {

// `pixels`: four bytes each (red, green, blue, alpha), row by row from the top, width * height of them.
QByteArray encodedPng(int width, int height, const QByteArray& pixels);

} // namespace quenby::localdrive
