// A folder is found again by its bookmark, and nothing else is.
#include "core/FolderBookmark.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;

class FolderBookmarkTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onlyTheSameFolderIsFound() {
        const QTemporaryDir home;
        const QDir folder(home.path());
        // Not UTF-8, and with what separates the parts of a bookmark.
        const QByteArray path = QFile::encodeName(home.path()) + "/with: \xff" + "colon";
        QVERIFY(!makeFolderBookmark(path).ok());
        QCOMPARE(::mkdir(path.constData(), 0700), 0);
        const auto bookmark = makeFolderBookmark(path);
        QVERIFY(bookmark.ok());
        QCOMPARE(resolveFolderBookmark(*bookmark).valueOr({}), path);

        // Moved away; another one, a file, or nothing in its place; and back again.
        const QByteArray aside = path + "-aside";
        QCOMPARE(::rename(path.constData(), aside.constData()), 0);
        QVERIFY(resolveFolderBookmark(*bookmark).error().is(errorDomain::posix, ENOENT));
        QCOMPARE(::mkdir(path.constData(), 0700), 0);
        QVERIFY(resolveFolderBookmark(*bookmark).error().is(errorDomain::posix, ESTALE));
        QCOMPARE(::rmdir(path.constData()), 0);
        QCOMPARE(::rename(aside.constData(), path.constData()), 0);
        QVERIFY(resolveFolderBookmark(*bookmark).ok());
        ::rmdir(path.constData()); // whose name the toolkit cannot remove
    }

    void nonsenseIsRefused() {
        const QTemporaryDir home;
        const QByteArray bookmark = makeFolderBookmark(QFile::encodeName(home.path())).valueOr({});
        QVERIFY(resolveFolderBookmark(bookmark).ok());
        for (qsizetype i = 0; i < bookmark.size(); ++i) {
            QByteArray damaged = bookmark;
            damaged[i] = damaged.at(i) == '0' ? '1' : '0';
            const auto resolved = resolveFolderBookmark(damaged);
            QVERIFY2(!resolved.ok() && resolved.error().is(errorDomain::posix, EINVAL), damaged.constData());
            QVERIFY(!resolveFolderBookmark(bookmark.first(i)).ok());
        }
        QVERIFY(!makeFolderBookmark("relative").ok());
        QVERIFY(!makeFolderBookmark("/etc/passwd").ok());
    }
};

QTEST_GUILESS_MAIN(FolderBookmarkTest)
#include "tst_folderbookmark.moc"
