// The login item as a file: what people and desktops do to it, copies of the program that come and go, and disks that
// take nothing.
#include "platform/linux/login/AutostartEntry.h"
#include "platform/linux/login/AutostartLoginItem.h"
#include "tests/platform/contracts/LoginItemContract.h"
#include "tests/platform/fakes/FakeLoginItem.h"
#include "tests/support/TroubledDisk.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms
const QString fileName = QStringLiteral("org.quenby.Quenby.desktop");

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaced in one step, as desktops do it.
bool write(const QString& path, const QByteArray& text, mode_t mode = 0644) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path + QLatin1Char('~'));
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        return false;
    file.close();
    return ::chmod(QFile::encodeName(file.fileName()).constData(), mode) == 0 &&
           ::rename(QFile::encodeName(file.fileName()).constData(), QFile::encodeName(path).constData()) == 0;
}

mode_t modeOf(const QString& path) {
    struct ::stat about {};
    return ::stat(QFile::encodeName(path).constData(), &about) == 0 ? about.st_mode & 07777 : 0;
}

// The permissions of files count for root, too.
class Ordinary {
public:
    Ordinary() { [[maybe_unused]] const int result = ::geteuid() == 0 ? ::seteuid(65534) : 0; }
    ~Ordinary() { [[maybe_unused]] const int result = ::getuid() == 0 ? ::seteuid(0) : 0; }
};

} // namespace

class tst_loginitem : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        for (const char* variable : {"APPIMAGE", "APPDIR"})
            qunsetenv(variable);
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder_->filePath(QStringLiteral("config"))));
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(folder_->filePath(QStringLiteral("system"))));
        options_ = autostartOptions(QStringLiteral("quenby"), {QStringLiteral("--hidden")});
        system_ = folder_->filePath(QStringLiteral("system/autostart/") + fileName);
    }

    void theFakeKeepsTheContract() {
        FakeLoginItem fake;
        loginItemKeepsItsContract(fake, [&](bool isEnabled) { fake.switchByDesktop(isEnabled); });
    }
    void theEntryKeepsTheContract_data() {
        QTest::addColumn<bool>("removes");
        QTest::newRow("a desktop that hides") << false;
        QTest::newRow("a desktop that removes") << true;
    }
    void theEntryKeepsTheContract() {
        QFETCH(bool, removes);
        AutostartLoginItem item(options_);
        const QByteArray text = "[Desktop Entry]\nType=Application\nName=Quenby\nExec=quenby\n";
        loginItemKeepsItsContract(item, [&](bool isEnabled) {
            if (removes && !isEnabled)
                QVERIFY(QFile::remove(options_.path));
            else
                QVERIFY(write(options_.path, isEnabled ? text : text + "Hidden=true\n"));
        });
    }

    void whatIsWritten() {
        AutostartLoginItem item(options_);
        QVERIFY(!item.setEnabled(true));
        QCOMPARE(options_.path, folder_->filePath(QStringLiteral("config/autostart/") + fileName));
        QCOMPARE(modeOf(options_.path), mode_t(0644));
        const AutostartEntry entry(contents(options_.path));
        QCOMPARE(entry.command(), QStringList({QCoreApplication::applicationFilePath(), QStringLiteral("--hidden")}));
        const AutostartEntry ofMenus(
            contents(QStringLiteral(QUENBY_SOURCE_DIR "/resources/desktop/org.quenby.Quenby.desktop")));
        for (const char* key : {"Type", "Name", "Comment", "Icon", "Terminal"}) {
            QVERIFY(!entry.value(key).isEmpty());
            QCOMPARE(entry.value(key), ofMenus.value(key));
        }
        // Of one's own doing, nothing stays.
        QVERIFY(!item.setEnabled(false));
        QVERIFY(QDir(QFileInfo(options_.path).path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    }

    void profilesHaveTheirOwn() {
        const AutostartOptions local =
            autostartOptions(QStringLiteral("quenby-local"), {QStringLiteral("--local"), QStringLiteral("--hidden")});
        AutostartLoginItem item(options_);
        AutostartLoginItem localItem(local);
        QVERIFY(!localItem.setEnabled(true));
        QVERIFY(!item.isEnabled());
        QVERIFY(!item.setEnabled(false));
        QVERIFY(localItem.isEnabled());
        const AutostartEntry entry(contents(local.path));
        QCOMPARE(entry.command().mid(1), QStringList({QStringLiteral("--local"), QStringLiteral("--hidden")}));
        QVERIFY(entry.value("Name") != "Quenby");
    }

    // The path of the program, as it will be found at the next login.
    void thePathThatLasts() {
        const QString program = QCoreApplication::applicationFilePath();
        const QString name = QFileInfo(program).fileName();
        const QString bin = folder_->filePath(QStringLiteral("bin"));
        const QString elsewhere = folder_->filePath(QStringLiteral("elsewhere"));
        QVERIFY(QDir().mkpath(bin) && QDir().mkpath(elsewhere));
        QVERIFY(QFile::link(program, bin + QLatin1Char('/') + name));
        const QByteArray path = qgetenv("PATH");
        const auto found = [] { return autostartOptions(QStringLiteral("quenby"), {}).program; };
        qputenv("PATH", QFile::encodeName(bin));
        QCOMPARE(found(), bin + QLatin1Char('/') + name);
        // Another program of that name.
        QVERIFY(write(elsewhere + QLatin1Char('/') + name, "#!/bin/sh\n", 0755));
        qputenv("PATH", QFile::encodeName(elsewhere));
        QCOMPARE(found(), program);
        qputenv("PATH", path);

        const QString package = folder_->filePath(QStringLiteral("Quenby.AppImage"));
        QVERIFY(write(package, "#!/bin/sh\n", 0755));
        qputenv("APPIMAGE", QFile::encodeName(package));
        qputenv("APPDIR", QFile::encodeName(QFileInfo(program).path()));
        QCOMPARE(found(), package);
        // Started from within another package.
        for (const char* other : {"elsewhere", "one which has ended since"}) {
            qputenv("APPDIR", QFile::encodeName(folder_->filePath(QString::fromLatin1(other))));
            QCOMPARE(found(), program);
        }
    }

    void whatPeopleAddedStays_data() {
        QTest::addColumn<QByteArray>("added");
        QTest::addColumn<bool>("isRemoved");
        QTest::newRow("nothing") << QByteArray() << true;
        QTest::newRow("the desktop's switch") << QByteArray("X-GNOME-Autostart-enabled=true\n") << true;
        QTest::newRow("the desktop's delay") << QByteArray("X-GNOME-Autostart-Delay=5\n") << false;
        QTest::newRow("a comment") << QByteArray("# mine\n") << false;
        QTest::newRow("a translation, an action")
            << QByteArray("Name[de]=Q\n\n[Desktop Action x]\nName=X\nExec=x\n") << false;
    }
    void whatPeopleAddedStays() {
        QFETCH(QByteArray, added);
        QFETCH(bool, isRemoved);
        AutostartLoginItem item(options_);
        QVERIFY(!item.setEnabled(true));
        const QByteArray text = contents(options_.path) + added;
        QVERIFY(write(options_.path, text, 0600));
        QVERIFY(!item.setEnabled(true)); // as it was before
        QCOMPARE(contents(options_.path), text);
        QVERIFY(!item.setEnabled(false));
        QCOMPARE(!QFile::exists(options_.path), isRemoved);
        QVERIFY(!item.setEnabled(true));
        if (!isRemoved) {
            QCOMPARE(contents(options_.path), text);
            QCOMPARE(modeOf(options_.path), mode_t(0600));
        }
    }

    // One that a package of the system brought for everybody.
    void theSystemsEntryDoesNotComeBack() {
        const QByteArray text = "[Desktop Entry]\nType=Application\nName=Quenby\nExec=quenby --hidden\nX-Vendor=1\n";
        QVERIFY(write(system_, text));
        AutostartLoginItem item(options_);
        QVERIFY(item.isEnabled());
        QVERIFY(!item.setEnabled(true));
        QVERIFY(!QFile::exists(options_.path));
        QVERIFY(!item.setEnabled(false));
        QVERIFY(!item.isEnabled());
        QCOMPARE(contents(options_.path), text + "Hidden=true\n");
        QVERIFY(!item.setEnabled(true));
        QVERIFY(item.isEnabled());

        QVERIFY(QFile::remove(system_) && QFile::remove(options_.path));
        QVERIFY(!item.setEnabled(true));
        QVERIFY(write(system_, text));
        QVERIFY(!item.setEnabled(false));
        QVERIFY(!item.isEnabled());
        QVERIFY(write(system_, text + "Hidden=true\n"));
        QVERIFY(!item.setEnabled(true));
        QVERIFY(item.isEnabled());
    }

    void linksStay() {
        const QString target = folder_->filePath(QStringLiteral("dotfiles/quenby.desktop"));
        QVERIFY(QDir().mkpath(QFileInfo(target).path()) && QDir().mkpath(QFileInfo(options_.path).path()));
        QVERIFY(QFile::link(QStringLiteral("../../dotfiles/quenby.desktop"), options_.path)); // leads nowhere yet
        AutostartLoginItem item(options_);
        QSignalSpy changed(&item, &LoginItem::changed);
        for (const bool isEnabled : {true, false, true}) {
            QVERIFY(!item.setEnabled(isEnabled));
            QCOMPARE(item.isEnabled(), isEnabled);
            QVERIFY(QFileInfo(options_.path).isSymLink());
            QCOMPARE(AutostartEntry(contents(target)).isEnabled(), isEnabled);
        }
        // What happens to the file behind the link is told as well.
        QVERIFY(write(target, contents(target) + "Hidden=true\n"));
        QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 1, patience);

        // The usual way to hide an entry of the system, and no place to write to.
        QVERIFY(QFile::remove(options_.path) && QFile::link(QStringLiteral("/dev/null"), options_.path));
        QVERIFY(!item.isEnabled());
        QVERIFY(!item.setEnabled(true));
        QVERIFY(item.isEnabled());
    }

    void theProgramMoved_data() {
        QTest::addColumn<QString>("exec"); // "%" stands for the other program
        QTest::addColumn<bool>("isThere");
        QTest::addColumn<QString>("followed"); // "!" for the running one; empty: nothing changes
        QTest::addColumn<QString>("switchedOn");
        const auto row = [](const char* name, const char* exec, bool isThere, const char* followed, const char* on) {
            QTest::newRow(name) << QString::fromLatin1(exec) << isThere << QString::fromLatin1(followed)
                                << QString::fromLatin1(on);
        };
        row("gone", "% --hidden", false, "! --hidden", "! --hidden");
        row("gone, with arguments of people", "% --hidden --status-item strip", false, "! --hidden --status-item strip",
            "! --hidden --status-item strip");
        row("another copy", "% --hidden", true, "", "! --hidden");
        row("a command around it", "sh -c \"sleep 5; quenby\"", true, "", "sh -c \"sleep 5; quenby\"");
        row("no command that can be read", "\"%", true, "! --hidden", "! --hidden");
    }
    void theProgramMoved() {
        QFETCH(QString, exec);
        QFETCH(bool, isThere);
        QFETCH(QString, followed);
        QFETCH(QString, switchedOn);
        const QString other = folder_->filePath(QStringLiteral("quenby"));
        QVERIFY(write(other, "#!/bin/sh\n", 0755));
        const auto isLed = [&](const QString& command) {
            QString expected = command;
            expected.replace(QLatin1Char('!'), options_.program);
            return AutostartEntry(contents(options_.path)).command() ==
                   AutostartEntry("[Desktop Entry]\nExec=" + expected.toUtf8() + '\n').command();
        };
        const QByteArray text = "[Desktop Entry]\nType=Application\nName=Mine\nTryExec=" + other.toUtf8() +
                                "\nExec=" + exec.replace(QLatin1Char('%'), other).toUtf8() + "\n# mine\n";
        if (!isThere) // still a file, but no program
            QVERIFY(write(other, "#!/bin/sh\n", 0644));

        for (const char* off : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
            QVERIFY(write(options_.path, text + off));
            AutostartLoginItem item(options_);
            item.followProgram(); // switched off is switched off
            QCOMPARE(contents(options_.path), text + off);
            QVERIFY(!item.setEnabled(true));
            QVERIFY2(isLed(switchedOn), contents(options_.path).constData());
        }
        QVERIFY(write(options_.path, text));
        AutostartLoginItem item(options_);
        QSignalSpy changed(&item, &LoginItem::changed);
        item.followProgram();
        const QByteArray after = contents(options_.path);
        QCOMPARE(after == text, followed.isEmpty());
        QVERIFY(item.isEnabled() && after.contains("Name=Mine\n") && after.contains("# mine\n"));
        if (!followed.isEmpty()) {
            QVERIFY2(isLed(followed), after.constData());
            QCOMPARE(AutostartEntry(after).string("TryExec"), options_.program);
        }
    }

    // The folder comes and goes; the file is written in place, and is not looked at while it is half there.
    void theWatch() {
        AutostartLoginItem item(options_);
        QSignalSpy changed(&item, &LoginItem::changed);
        for (int i = 0; i < 2; ++i) {
            QVERIFY(write(options_.path, "[Desktop Entry]\nExec=quenby\n"));
            QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 2 * i + 1, patience);
            QFile file(options_.path);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            QCoreApplication::processEvents();
            file.write("[Desktop Entry]\nExec=quenby\nComment=2\n");
            file.close();
            QVERIFY(QDir(folder_->filePath(QStringLiteral("config"))).removeRecursively());
            QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 2 * i + 2, patience);
            QVERIFY(!item.isEnabled());
        }
    }

    void faults_data() {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("words");
        const auto row = [](const char* fault, int code, const char* words) {
            QTest::newRow(fault) << QString::fromLatin1(fault) << code << QString::fromLatin1(words);
        };
        row("a read-only folder", EACCES, "may read and write");
        row("a folder that is a file", ENOTDIR, "move it away");
        row("an entry that is a folder", EISDIR, "move it away");
        row("an entry that nobody may read", EACCES, "may read and write");
        row("a link into a folder that is not there", ENOENT, "leads nowhere");
        row("a full disk", EFBIG, "Make room");
    }
    void faults() {
        QFETCH(QString, fault);
        const QString folder = QFileInfo(options_.path).path();
        const auto chmod = [](const QString& path, mode_t mode) {
            return ::chmod(QFile::encodeName(path).constData(), mode) == 0;
        };
        const auto is = [&](const char* name) { return fault == QLatin1String(name); };
        QVERIFY(chmod(folder_->path(), 0755));
        if (is("a folder that is a file")) {
            QVERIFY(write(folder, "no folder"));
        } else {
            QVERIFY(QDir().mkpath(folder));
        }
        if (is("a read-only folder"))
            QVERIFY(chmod(folder, 0555));
        if (is("an entry that is a folder"))
            QVERIFY(QDir().mkpath(options_.path));
        if (is("an entry that nobody may read"))
            QVERIFY(write(options_.path, "[Desktop Entry]\nExec=quenby\n", 0000));
        if (is("a link into a folder that is not there"))
            QVERIFY(QFile::link(QStringLiteral("/nowhere/at/all.desktop"), options_.path));
        std::unique_ptr<FileSizeLimit> full;
        if (is("a full disk")) {
            QVERIFY(chmod(folder, 0777));
            full = std::make_unique<FileSizeLimit>(8);
        }

        const Ordinary user;
        AutostartLoginItem item(options_);
        const MaybeError error = item.setEnabled(true);
        QVERIFY(error);
        QCOMPARE(error->domain(), errorDomain::posix);
        QTEST(int(error->code()), "code");
        const QString reason = error->detail(errorKey::reason).toString();
        QFETCH(QString, words);
        QVERIFY2(reason.contains(words) && reason.contains(options_.path), qPrintable(reason));
        QVERIFY(!item.isEnabled());
        QVERIFY(!item.setEnabled(false)); // it is so already
        QVERIFY(QDir(folder).entryList({QStringLiteral(".quenby-*")}, QDir::Files | QDir::Hidden).isEmpty());
    }

    // What cannot be removed stays on, and says so.
    void aFolderThatKeepsItsFiles() {
        AutostartLoginItem item(options_);
        QVERIFY(!item.setEnabled(true));
        const QString folder = QFileInfo(options_.path).path();
        for (const QString& path : {folder_->path(), QFileInfo(folder).path()})
            QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0755), 0);
        QCOMPARE(::chmod(QFile::encodeName(folder).constData(), 0555), 0);
        const Ordinary user;
        const MaybeError error = item.setEnabled(false);
        QVERIFY(error && error->is(errorDomain::posix, EACCES));
        QVERIFY(item.isEnabled());
    }

private:
    std::unique_ptr<QTemporaryDir> folder_;
    AutostartOptions options_;
    QString system_;
};

QTEST_GUILESS_MAIN(tst_loginitem)
#include "tst_loginitem.moc"
