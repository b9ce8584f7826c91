// Cache folders on the disk.
#include "platform/linux/session/UserFolders.h"
#include "platform/linux/session/XdgCacheFolders.h"
#include "tests/platform/contracts/CacheFoldersContract.h"
#include "tests/platform/fakes/FakeCacheFolders.h"

#include <sys/stat.h>

using namespace quenby;
using namespace quenby::testing;

class CacheFoldersTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFakeKeepsTheContract() {
        FakeCacheFolders fake;
        cacheFoldersKeepTheirContract(fake);
    }
    void theFoldersKeepTheContract() {
        const QTemporaryDir home;
        XdgCacheFolders folders(home.filePath(QStringLiteral("not/yet/there")));
        cacheFoldersKeepTheirContract(folders);
    }

    void theyLieWhereTheEnvironmentSays() {
        const QTemporaryDir home;
        qputenv("XDG_CACHE_HOME", home.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
        QCOMPARE(cacheFolderPath(QStringLiteral("quenby-local")), home.filePath(QStringLiteral("quenby-local")));
        QCOMPARE(settingsFilePath(QStringLiteral("quenby-local")),
                 home.filePath(QStringLiteral("quenby/quenby-local.ini")));
        qputenv("XDG_CACHE_HOME", "relative"); // to be ignored, after the XDG base directory rules
        QVERIFY(QDir::isAbsolutePath(cacheFolderPath(QStringLiteral("quenby"))));
    }

    void aFolderOfTheWrongModeIsClosed() {
        const QTemporaryDir home;
        XdgCacheFolders folders(home.path());
        const QByteArray path = QFile::encodeName(folders.path(QStringLiteral("x")));
        QCOMPARE(::mkdir(path.constData(), 0777), 0);
        QCOMPARE(::chmod(path.constData(), 0777), 0);
        QVERIFY(folders.create(QStringLiteral("x")));
        struct ::stat about {};
        QCOMPARE(::stat(path.constData(), &about), 0);
        QCOMPARE(about.st_mode & 07777, mode_t(0700));
    }

    void whatCannotBeMadeIsSaid() {
        const QTemporaryDir home;
        QVERIFY(writeFile(home.filePath(QStringLiteral("file")), "x"));
        XdgCacheFolders folders(home.filePath(QStringLiteral("file/below")));
        const auto made = folders.create(QStringLiteral("x"));
        QVERIFY(!made);
        QCOMPARE(made.error().domain(), errorDomain::posix);
        QVERIFY(made.error().description().contains(folders.path(QStringLiteral("x"))));
    }

    void aNameNeverLeadsOutOfTheFolder() {
        const QTemporaryDir home;
        QVERIFY(writeFile(home.filePath(QStringLiteral("dear")), "letter"));
        XdgCacheFolders folders(home.filePath(QStringLiteral("quenby")));
        for (const char* name : {"", ".", "..", "../dear", "a/b"}) {
            QVERIFY(!folders.create(QString::fromLatin1(name)));
            folders.remove(QString::fromLatin1(name));
        }
        QVERIFY(QFileInfo::exists(home.filePath(QStringLiteral("dear"))));
    }
};

QTEST_GUILESS_MAIN(CacheFoldersTest)
#include "tst_cachefolders.moc"
