// Makes a row's picture of bytes that anybody may have sent.
#pragma once

#include <QByteArray>
#include <QImage>

#include <atomic>

namespace quenby {

// What a row shows, 70 by 50, at three times the density.
inline constexpr QSize rowPictureSize{210, 150};

// The picture, scaled down in proportion until it fits into rowPictureSize; it may be smaller than that. Only the first
// of several frames. Null when the bytes are no whole picture of a known format, when the picture has more pixels than
// a camera's, when it takes longer than a few seconds, and soon after the flag is set. Threads: any.
QImage decodedRowPicture(const QByteArray& bytes, const std::atomic<bool>& isGivenUp);

} // namespace quenby
