// The formats that pictures of rows may have, told by their content alone: a name or a type is only a claim. Others
// are not decoded, whatever decoders the toolkit happens to have; above all no SVG, which is a program.
#pragma once

#include <QByteArray>

namespace quenby {

struct PictureFormat {
    const char* name; // as the toolkit's image readers know it
    bool (*begins)(QByteArrayView bytes);
    // Whether the end is there: some decoders make up what is missing.
    bool (*isWhole)(QByteArrayView bytes);
    // What of it makes the first frame's pixels; null where that is all.
    QByteArray (*essence)(QByteArrayView bytes);
};

// Null for bytes that are no picture of any known format.
const PictureFormat* pictureFormatOf(QByteArrayView bytes);

} // namespace quenby
