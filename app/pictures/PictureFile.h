// A thumbnail as a file in the image cache folder. Threads: any, one file at a time.
#pragma once

#include <QImage>
#include <QString>

#include <atomic>

namespace quenby {

// IDENTIFIER.png for identifiers as the Drive makes them. Others, which could lead out of the folder or be no file's
// name at all, are replaced by a digest of theirs; no two identifiers have the same name.
QString pictureFileName(const QString& identifier);

// Null when there is no such file, or what it holds is no picture: the content is trusted no more than the network's.
QImage readPictureFile(const QString& path, const std::atomic<bool>& isGivenUp);

// Replaces the file as a whole, or leaves everything as it was: when it can't be written, or the flag is set before it
// is in its place.
void writePictureFile(const QString& path, const QImage& picture, const std::atomic<bool>& isGivenUp);

} // namespace quenby
