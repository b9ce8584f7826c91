// Where a client comes from: what was pasted or dropped is its text, or names its file.
#pragma once

#include "core/Result.h"

#include <QByteArray>
#include <QString>

class QMimeData;

namespace quenby {

struct ClientSource {
    QByteArray path; // absolute; empty: the text is it
    QByteArray text;
};

// The error's reason says what was pasted instead, or what to do. Threads: the main thread.
Result<ClientSource> clientSource(const QMimeData& data);

// The whole file, unless it is larger than any client's. It may take as long as the disk or the network behind it
// does. Threads: any but the main thread.
Result<QByteArray> readClientFile(const QByteArray& path);

} // namespace quenby
