// What a drag brings to the tabs: files of this computer, or else one address of the web. Threads: any.
#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

class QMimeData;

namespace quenby {

struct TabDrop {
    QList<QByteArray> paths; // absolute, in the file system's bytes, which need not be text
    QUrl address;            // when there are no paths

    bool isUsable() const { return !paths.isEmpty() || !address.isEmpty(); }
};

TabDrop tabDrop(const QMimeData& data);

} // namespace quenby
