#include "app/agent/HandoverLines.h"

namespace quenby {
namespace {

constexpr QByteArrayView filePrefix = "file ";

} // namespace

Handover handoverFromFiles(const QList<QByteArray>& files) {
    Handover handover;
    for (const QByteArray& path : files)
        handover.append(filePrefix.toByteArray() + path);
    return handover;
}

QList<QByteArray> filesFromHandover(const Handover& handover) {
    QList<QByteArray> files;
    for (const QByteArray& entry : handover) {
        if (entry.startsWith(filePrefix))
            files.append(entry.mid(filePrefix.size()));
    }
    return files;
}

} // namespace quenby
