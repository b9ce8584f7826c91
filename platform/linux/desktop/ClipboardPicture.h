// A picture as it lies on the clipboard: encoded by whoever copied it, or decoded already when that is this program.
#pragma once

#include <QByteArray>
#include <QImage>

class QMimeData;

namespace quenby {

struct ClipboardPicture {
    QByteArray format; // "png", as the toolkit's readers call it; empty with an image
    QByteArray bytes;
    QImage image;
};

// By the types alone; nothing is fetched. Threads: the main thread.
bool hasPicture(const QMimeData& data);

// Fetched in the format that its owner gives away soonest, once; with neither bytes nor an image when there is none, or
// none that can be read. Threads: the main thread; it waits for the owner.
ClipboardPicture fetchPicture(const QMimeData& data);

// As TIFF into the file, which is there whole or not at all; whether it is. Pictures that the toolkit's readers refuse
// to hold for their size (QImageReader::allocationLimit()) are refused before they are decoded. Threads: any.
bool writeAsTiff(const ClipboardPicture& picture, const QByteArray& path);

} // namespace quenby
