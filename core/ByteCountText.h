// Sizes for people.
#pragma once

#include <QString>

namespace quenby {

// A size such as "15 GB" or "1.5 MB": 1 GB is 1024 x 1024 x 1024 bytes.
QString byteCountText(qint64 bytes);

} // namespace quenby
