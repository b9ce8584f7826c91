// The file of an autostart entry: read, replaced in one step, removed. Paths are bytes.
//
// Threads: any. Errors: errorDomain::posix; their reasons are for people.
#pragma once

#include "core/Error.h"
#include "core/Result.h"

#include <QByteArray>

#include <optional>

namespace quenby {

// Nothing: there is no such file. What is no file of text, such as the null device that a link may lead to, is empty.
Result<std::optional<QByteArray>> readEntryFile(const QByteArray& path);

// Makes the folders that are missing. A new file may be read by everybody (0644), and an old one keeps its mode. A link
// stays a link: the file that it leads to is written.
MaybeError writeEntryFile(const QByteArray& path, const QByteArray& text);

bool isLink(const QByteArray& path);
MaybeError removeEntryFile(const QByteArray& path);

} // namespace quenby
