// The ports at which this process waits for connections, as the kernel tells it.
#pragma once

#include <QDir>
#include <QFile>
#include <QList>
#include <QSet>

namespace quenby::testing {

struct ListeningPort {
    quint16 port = 0;
    bool isLoopbackOnly = false; // on 127.0.0.1, and nowhere else
};

inline QList<ListeningPort> listeningPorts() {
    QSet<QByteArray> ownSockets; // inodes
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    for (const QString& name : descriptors.entryList(QDir::System | QDir::Files)) {
        const QString target = QFile::symLinkTarget(descriptors.filePath(name));
        const qsizetype start = target.indexOf(QLatin1String("socket:["));
        if (start >= 0)
            ownSockets.insert(target.sliced(start + 8).chopped(1).toLatin1());
    }
    QList<ListeningPort> found;
    for (const char* table : {"/proc/self/net/tcp", "/proc/self/net/tcp6"}) {
        QFile file(QString::fromLatin1(table));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QList<QByteArray> lines = file.readAll().split('\n');
        for (const QByteArray& line : lines.mid(1)) {
            const QList<QByteArray> fields = line.simplified().split(' ');
            if (fields.size() < 10 || fields.at(3) != "0A" || !ownSockets.contains(fields.at(9)))
                continue;
            const QList<QByteArray> local = fields.at(1).split(':');
            found.append({local.at(1).toUShort(nullptr, 16), local.at(0) == "0100007F"});
        }
    }
    return found;
}

} // namespace quenby::testing
