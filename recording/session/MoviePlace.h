// Where the movie of a recording comes to lie. Threads: the main thread.
#pragma once

#include "core/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quenby {

// The path of a movie with this name (without extension) in the folder, which exists. Nothing when the name is taken:
// by a movie that is there, or by one that is being recorded. The error's reason says why no file can be made there.
Result<std::optional<QByteArray>> freeMoviePlace(const QString& folder, const QString& name);

} // namespace quenby
