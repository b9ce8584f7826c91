// Files that take their place when they are whole.
#include "platform/linux/screencapture/ReplacingFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace quenby;

namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

} // namespace

class tst_ReplacingFile : public QObject {
    Q_OBJECT

    QString place(const QTemporaryDir& folder, const char* name = "picture.png") const {
        return folder.filePath(QString::fromLatin1(name));
    }
    QStringList files(const QTemporaryDir& folder) const {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

private Q_SLOTS:
    void onlyWhatIsCommittedIsThere() {
        const QTemporaryDir folder;
        write(place(folder), "old");
        {
            ReplacingFile file(QFile::encodeName(place(folder)));
            QVERIFY(!file.open());
            QCOMPARE(file.device().write("new"), 3);
            QCOMPARE(contents(place(folder)), "old");
        }
        QCOMPARE(files(folder), QStringList{QStringLiteral("picture.png")});
        ReplacingFile file(QFile::encodeName(place(folder)));
        QVERIFY(!file.open());
        QCOMPARE(file.device().write("new"), 3);
        QVERIFY(!file.commit());
        QCOMPARE(contents(place(folder)), "new");
        QCOMPARE(files(folder), QStringList{QStringLiteral("picture.png")});
        // Others may read it as they may any new file.
        const mode_t mask = ::umask(0);
        ::umask(mask);
        struct stat about {};
        QCOMPARE(::stat(QFile::encodeName(place(folder)).constData(), &about), 0);
        QCOMPARE(about.st_mode & 0777, 0666 & ~mask);
    }

    // A name that is not UTF-8, and one that leaves no room for another beside it.
    void namesAreBytes() {
        const QTemporaryDir folder;
        for (const QByteArray& name : {QByteArray("\xff\xfe.png"), QByteArray(255, 'x')}) {
            const QByteArray path = QFile::encodeName(folder.path()) + '/' + name;
            ReplacingFile file(path);
            QVERIFY(!file.open());
            QVERIFY(!file.commit());
            struct stat about {};
            QCOMPARE(::stat(path.constData(), &about), 0);
            QCOMPARE(::unlink(path.constData()), 0);
        }
    }

    void moves_data() {
        QTest::addColumn<QString>("from");
        QTest::newRow("within a file system") << QDir::tempPath();
        // Memory is one of its own.
        QTest::newRow("over file systems") << QStringLiteral("/dev/shm");
    }
    void moves() {
        QFETCH(QString, from);
        const QTemporaryDir source(from + QStringLiteral("/quenby-XXXXXX"));
        const QTemporaryDir target;
        QVERIFY(source.isValid());
        const QByteArray large = QByteArray("\x89PNG\0", 5) + QByteArray(300'000, 'p');
        write(place(source), large);
        write(place(target), "old");
        QVERIFY(!moveOver(QFile::encodeName(place(source)), QFile::encodeName(place(target))));
        QCOMPARE(contents(place(target)), large);
        QCOMPARE(files(target), QStringList{QStringLiteral("picture.png")});
        QCOMPARE(files(source), QStringList());

        // What cannot be moved stays where it is.
        write(place(source), large);
        const auto error = moveOver(QFile::encodeName(place(source)), "/proc/picture.png");
        QVERIFY(error);
        QVERIFY(error->detail(errorKey::reason)
                    .toString()
                    .startsWith(QLatin1String("The picture could not be saved in /proc: ")));
        QCOMPARE(contents(place(source)), large);
    }
};

QTEST_GUILESS_MAIN(tst_ReplacingFile)
#include "tst_ReplacingFile.moc"
