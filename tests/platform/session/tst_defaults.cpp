// The settings file: what reaches the disk, what is taken from it, and what happens when it is not as it should be.
#include "platform/linux/session/IniDefaults.h"
#include "tests/platform/contracts/DefaultsContract.h"
#include "tests/platform/fakes/FakeDefaults.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms
const QString key = QStringLiteral("showUsegeText");

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool replaceContents(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// Nothing more can be written, as on a full disk.
class FullDisk {
public:
    FullDisk() {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        ::rlimit none = before_;
        none.rlim_cur = 0;
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }

private:
    ::rlimit before_{};
};

// The permissions of files count for root, too.
class Ordinary {
public:
    Ordinary() { [[maybe_unused]] const int result = ::geteuid() == 0 ? ::seteuid(65534) : 0; }
    ~Ordinary() { [[maybe_unused]] const int result = ::getuid() == 0 ? ::seteuid(0) : 0; }
};

} // namespace

class DefaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(QStringLiteral("quenby/quenby.ini"));
    }

    void theFakeKeepsTheContract() {
        FakeDefaults fake;
        defaultsKeepTheirContract(fake);
    }
    void theFileKeepsTheContract() {
        IniDefaults defaults(path_);
        defaultsKeepTheirContract(defaults);
    }

    void valuesAreThereAtTheNextStart() {
        const QString odd = QStringLiteral("OAuth2: Drive/x: Google Drive");
        const QVariantList tabs{QVariantMap{{QStringLiteral("title"), QStringLiteral("ü \"q\"\n; = [x]")}}};
        QVariant before;
        {
            IniDefaults defaults(path_);
            defaults.setValueForKey(odd, true);
            defaults.setValueForKey(QStringLiteral("OldTabs"), tabs);
            defaults.setValueForKey(key, 0.1);
            before = defaults.valueForKey(key);
        }
        struct ::stat about {};
        QCOMPARE(::stat(QFile::encodeName(path_).constData(), &about), 0);
        QCOMPARE(about.st_mode & 07777, mode_t(0600));
        const IniDefaults defaults(path_);
        QVERIFY(defaults.boolForKey(odd));
        QCOMPARE(defaults.valueForKey(QStringLiteral("OldTabs")).toList(), tabs);
        QCOMPARE(defaults.valueForKey(key), before);
        // As any other reader of the format sees it.
        QCOMPARE(QSettings(path_, QSettings::IniFormat).value(odd).toBool(), true);
    }

    // On the disk while the program runs, in one go, and without taking the own writing for somebody else's.
    void writesSoonAndWithoutEcho() {
        IniDefaults defaults(path_);
        QSignalSpy changed(&defaults, &Defaults::changed);
        for (int i = 0; i < 5; ++i)
            defaults.setValueForKey(key + QString::number(i), i);
        QVERIFY(!QFile::exists(path_));
        QCoreApplication::processEvents();
        QVERIFY(contents(path_).contains("showUsegeText4=4"));
        // What comes after it in the folder has been told after it.
        QVERIFY(replaceContents(path_, contents(path_) + "other=1\n"));
        QTRY_VERIFY_WITH_TIMEOUT(defaults.boolForKey(QStringLiteral("other")), patience);
        QCOMPARE(changed.size(), 6);
    }

    void anotherProgramsChangesAreTaken_data() {
        QTest::addColumn<bool>("isReplaced");
        QTest::newRow("written in place") << false;
        QTest::newRow("replaced") << true;
    }
    void anotherProgramsChangesAreTaken() {
        QFETCH(bool, isReplaced);
        IniDefaults defaults(path_);
        defaults.setValueForKey(key, true);
        defaults.setValueForKey(QStringLiteral("stays"), 1);
        defaults.setValueForKey(QStringLiteral("goes"), 1);
        QCoreApplication::processEvents();
        QSignalSpy changed(&defaults, &Defaults::changed);
        for (const QByteArray& value : {QByteArray("false"), QByteArray("yes"), QByteArray("no")}) {
            const QByteArray text = "# by hand\n[General]\nstays=1\n" + key.toUtf8() + '=' + value + "\n";
            if (isReplaced) {
                QVERIFY(replaceContents(path_ + QLatin1Char('~'), text));
                QCOMPARE(::rename(QFile::encodeName(path_ + QLatin1Char('~')).constData(),
                                  QFile::encodeName(path_).constData()),
                         0);
            } else {
                QVERIFY(replaceContents(path_, text));
            }
            QTRY_COMPARE_WITH_TIMEOUT(defaults.valueForKey(key).toByteArray(), value, patience);
        }
        QVERIFY(!defaults.valueForKey(QStringLiteral("goes")).isValid());
        QCOMPARE(changed.count({QStringLiteral("stays")}), 0);
        QCOMPARE(changed.count({QStringLiteral("goes")}), 1);
    }

    // Changed there and here at the same time: each keeps what it changed.
    void anotherProgramsKeysSurviveTheOwnWrite() {
        IniDefaults defaults(path_);
        defaults.setValueForKey(key, 1);
        QCoreApplication::processEvents();
        QVERIFY(replaceContents(path_, "[General]\ntheirs=5\nshowUsegeText=7\n"));
        defaults.setValueForKey(key, 2);
        QTRY_COMPARE_WITH_TIMEOUT(defaults.valueForKey(QStringLiteral("theirs")).toInt(), 5, patience);
        QCOMPARE(defaults.valueForKey(key).toInt(), 2);
        QVERIFY(contents(path_).contains("theirs=5"));
        QVERIFY(contents(path_).contains("showUsegeText=2"));
    }

    void aDeletedFileIsWrittenAgainInWhole() {
        IniDefaults defaults(path_);
        defaults.setValueForKey(key, 1);
        QCoreApplication::processEvents();
        QVERIFY(QDir(QFileInfo(path_).path()).removeRecursively());
        defaults.setValueForKey(QStringLiteral("another"), 1);
        QTRY_VERIFY_WITH_TIMEOUT(contents(path_).contains("another=1"), patience);
        QVERIFY(contents(path_).contains("showUsegeText=1"));
    }

    void damage_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("isDamaged");
        const auto row = [](const char* name, const QByteArray& text, bool isDamaged) {
            QTest::newRow(name) << text << isDamaged;
        };
        row("empty", "", false);
        row("comments and blank lines", "; a \"b\n# it's so\n\n[General]\nkey=1\n", false);
        row("a comment that swallows what follows", "# \"a\n[General]\nkey=1\n# \"b\n", true);
        row("Windows line ends and a mark", "\xef\xbb\xbf[General]\r\nkey=1\r\n", false);
        row("a value over several lines", "[General]\nkey=\"1\n2\"\nother=1, \\\n  2\n", false);
        row("no line end at the end", "[General]\nkey=1", false);
        row("zeros after a power cut", QByteArray(512, '\0'), true);
        row("zeros in the middle", QByteArray("[General]\nkey=1\n\0\0\0\n", 20), true);
        row("a line without a value", "[General]\nkey=1\nshowUs", true);
        row("a value without a key", "[General]\n=1\n", true);
        row("an open section", "[Gene", true);
        row("an open quotation mark", "[General]\nkey=\"1\n", true);
        row("another kind of file", "{\"key\": 1}\n", true);
        row("no text", "\x89PNG=\xff\xfe\n", true);
    }
    void damage() {
        QFETCH(QByteArray, text);
        QFETCH(bool, isDamaged);
        QVERIFY(QDir().mkpath(QFileInfo(path_).path()));
        QVERIFY(replaceContents(path_, text));
        QVERIFY(replaceContents(path_ + QStringLiteral(".damaged-1"), "from an earlier time"));
        {
            IniDefaults defaults(path_);
            QSignalSpy troubled(&defaults, &Defaults::troubled);
            defaults.setValueForKey(QStringLiteral("new"), 1);
            QCoreApplication::processEvents();
            QCOMPARE(troubled.size(), isDamaged ? 1 : 0);
            QCOMPARE(defaults.valueForKey(QStringLiteral("new")).toInt(), 1);
        }
        QCOMPARE(contents(path_ + QStringLiteral(".damaged-1")), QByteArray("from an earlier time"));
        QCOMPARE(contents(path_ + QStringLiteral(".damaged-2")), isDamaged ? text : QByteArray());
        QVERIFY(contents(path_).contains("new=1"));
        QCOMPARE(contents(path_).contains("key="), !isDamaged && text.contains("key="));
    }

    // Another program breaks the file while this one runs: nobody's bytes are lost, and no setting is.
    void damageDuringTheRun() {
        IniDefaults defaults(path_);
        defaults.setValueForKey(key, 1);
        QCoreApplication::processEvents();
        QSignalSpy troubled(&defaults, &Defaults::troubled);
        QVERIFY(replaceContents(path_, "half a li"));
        defaults.setValueForKey(QStringLiteral("another"), 1);
        QTRY_COMPARE_WITH_TIMEOUT(troubled.size(), 1, patience);
        QCOMPARE(contents(path_ + QStringLiteral(".damaged-1")), QByteArray("half a li"));
        QVERIFY(contents(path_).contains("showUsegeText=1"));
        QVERIFY(contents(path_).contains("another=1"));
    }

    void whatCannotBeReadIsNotTouched_data() {
        QTest::addColumn<QString>("what");
        for (const char* what : {"no permission", "a folder", "a pipe"})
            QTest::newRow(what) << QString::fromLatin1(what);
    }
    void whatCannotBeReadIsNotTouched() {
        QFETCH(QString, what);
        QVERIFY(QDir().mkpath(what == QLatin1String("a folder") ? path_ : QFileInfo(path_).path()));
        if (what == QLatin1String("a pipe"))
            QCOMPARE(::mkfifo(QFile::encodeName(path_).constData(), 0600), 0);
        if (what == QLatin1String("no permission")) {
            QVERIFY(replaceContents(path_, "[General]\nkey=1\n"));
            QCOMPARE(::chmod(QFile::encodeName(path_).constData(), 0), 0);
            QCOMPARE(::chmod(QFile::encodeName(folder_->path()).constData(), 0755), 0);
        }
        {
            const Ordinary user;
            IniDefaults defaults(path_);
            QSignalSpy troubled(&defaults, &Defaults::troubled);
            defaults.setValueForKey(key, 1);
            QCoreApplication::processEvents();
            QCOMPARE(defaults.valueForKey(key).toInt(), 1);
            QCOMPARE(troubled.size(), 1);
        }
        ::chmod(QFile::encodeName(path_).constData(), 0700);
        if (what == QLatin1String("no permission"))
            QCOMPARE(contents(path_), QByteArray("[General]\nkey=1\n"));
        QCOMPARE(QDir(QFileInfo(path_).path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size(),
                 1);
    }

    void aFullDiskIsSaidOnceAndCaughtUpWith() {
        IniDefaults defaults(path_);
        defaults.setValueForKey(key, 1);
        QCoreApplication::processEvents();
        const QByteArray before = contents(path_);
        QSignalSpy troubled(&defaults, &Defaults::troubled);
        {
            const FullDisk disk;
            for (int i = 2; i < 5; ++i) {
                defaults.setValueForKey(key, i);
                QCoreApplication::processEvents();
            }
            QCOMPARE(contents(path_), before);
        }
        QCOMPARE(troubled.size(), 1);
        QCOMPARE(defaults.valueForKey(key).toInt(), 4);
        defaults.setValueForKey(QStringLiteral("another"), 1);
        QTRY_VERIFY_WITH_TIMEOUT(contents(path_).contains("another=1"), patience);
        QVERIFY(contents(path_).contains("showUsegeText=4"));
    }

    void aReadOnlyFolderIsSaid() {
        QCOMPARE(::chmod(QFile::encodeName(folder_->path()).constData(), 0755), 0);
        QVERIFY(QDir().mkpath(QFileInfo(path_).path()));
        QCOMPARE(::chmod(QFile::encodeName(QFileInfo(path_).path()).constData(), 0555), 0);
        const Ordinary user;
        IniDefaults defaults(path_);
        QSignalSpy troubled(&defaults, &Defaults::troubled);
        defaults.setValueForKey(key, 1);
        QTRY_COMPARE_WITH_TIMEOUT(troubled.size(), 1, patience);
        QVERIFY(troubled.first().first().toString().contains(path_));
        QCOMPARE(defaults.valueForKey(key).toInt(), 1);
    }

private:
    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
};

QTEST_GUILESS_MAIN(DefaultsTest)
#include "tst_defaults.moc"
