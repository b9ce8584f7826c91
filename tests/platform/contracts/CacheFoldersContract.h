// What every CacheFolders must do.
#pragma once

#include "platform/CacheFolders.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace quenby::testing {

inline bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// The folders hold nothing yet.
inline void cacheFoldersKeepTheirContract(CacheFolders& folders) {
    const QString name = QStringLiteral("imageCache");
    const QString path = folders.path(name);
    QVERIFY(QDir::isAbsolutePath(path));
    QVERIFY(!QFileInfo::exists(path));
    folders.remove(name);

    QCOMPARE(folders.create(name).valueOr({}), path);
    QCOMPARE(QFile::permissions(path) & ~QFile::Permissions(0x7000 | 0x0700),
             QFile::Permissions()); // nothing for groups and others
    QVERIFY(writeFile(path + QStringLiteral("/icon"), "png"));
    QCOMPARE(folders.create(name).valueOr({}), path); // what is there stays
    QVERIFY(QFileInfo::exists(path + QStringLiteral("/icon")));

    // Whoever puts links there gains and loses nothing.
    const QTemporaryDir elsewhere;
    QVERIFY(writeFile(elsewhere.filePath(QStringLiteral("dear")), "letter"));
    QVERIFY(QFile::link(elsewhere.path(), path + QStringLiteral("/link")));
    folders.remove(name);
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(QFile::link(elsewhere.path(), path));
    folders.remove(name);
    QVERIFY(!QFileInfo(path).isSymLink());
    QVERIFY(QFile::link(elsewhere.path(), path));
    QCOMPARE(folders.create(name).valueOr({}), path);
    QVERIFY(!QFileInfo(path).isSymLink());
    QVERIFY(QFileInfo(path).isDir());
    QVERIFY(QFileInfo::exists(elsewhere.filePath(QStringLiteral("dear"))));
    folders.remove(name);
}

} // namespace quenby::testing
