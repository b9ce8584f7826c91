// The text of an autostart entry: what is read from it, what is written, and that the rest stays.
#include "platform/linux/login/AutostartEntry.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;

namespace {

const QByteArray head = "[Desktop Entry]\nType=Application\nName=Quenby\n";

} // namespace

class tst_autostartentry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void switches_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("isEnabled");
        QTest::addColumn<QByteArray>("switchedOver");
        const auto row = [](const char* name, const QByteArray& text, bool isEnabled, const QByteArray& switchedOver) {
            QTest::newRow(name) << text << isEnabled << switchedOver;
        };
        const QByteArray exec = head + "Exec=quenby\n";
        row("on", exec, true, exec + "Hidden=true\n");
        row("said to be on", exec + "Hidden=false\n", true, exec + "Hidden=true\n");
        row("hidden", exec + "Hidden=true\n# mine\n", false, exec + "# mine\n");
        row("as older desktops write it", exec + " Hidden = 1 \n", false, exec);
        row("off at the desktop", exec + "X-GNOME-Autostart-enabled=false\n", false,
            exec + "X-GNOME-Autostart-enabled=true\n");
        row("off twice", exec + "Hidden=true\nX-GNOME-Autostart-enabled=false\n", false,
            exec + "X-GNOME-Autostart-enabled=true\n");
        row("the last one counts", exec + "Hidden=true\nHidden=false\n", true, exec + "Hidden=true\nHidden=true\n");
        row("a comment", exec + "#Hidden=true\n", true, exec + "Hidden=true\n#Hidden=true\n");
        row("of another group", exec + "\n[Desktop Action x]\nHidden=true\n", true,
            exec + "Hidden=true\n\n[Desktop Action x]\nHidden=true\n");
        row("of some desktops only", exec + "OnlyShowIn=GNOME;\nNotShowIn=KDE;\n", true,
            exec + "OnlyShowIn=GNOME;\nNotShowIn=KDE;\nHidden=true\n");
        row("Windows line ends", "[Desktop Entry]\r\nExec=quenby\r\nHidden=true\r\n", false,
            "[Desktop Entry]\r\nExec=quenby\r\n");
        row("comments first, no end", "# a\n\n[Desktop Entry]\nExec=quenby\nName[de]=Q\xc3\xbc", true,
            "# a\n\n[Desktop Entry]\nExec=quenby\nName[de]=Q\xc3\xbc\nHidden=true\n");
    }
    void switches() {
        QFETCH(QByteArray, text);
        QFETCH(bool, isEnabled);
        AutostartEntry entry(text);
        QCOMPARE(entry.isEnabled(), isEnabled);
        entry.setEnabled(!isEnabled);
        QTEST(entry.text(), "switchedOver");
        QCOMPARE(AutostartEntry(entry.text()).isEnabled(), !isEnabled);
    }

    void whatIsNoEntryIsNotKept_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("lines without a group") << QByteArray("Exec=quenby\n");
        QTest::newRow("another group first") << "[General]\nExec=quenby\n" + head;
        QTest::newRow("zeros after a power cut") << head + QByteArray(100, '\0');
    }
    void whatIsNoEntryIsNotKept() {
        QFETCH(QByteArray, text);
        AutostartEntry entry(text);
        QVERIFY(!entry.isEnabled());
        QCOMPARE(entry.text(), QByteArray());
        entry.setValue("Type", "Application");
        QCOMPARE(entry.text(), QByteArray("[Desktop Entry]\nType=Application\n"));
    }

    // Each comes back, and the desktops' own checker finds nothing.
    void commands_data() {
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<QByteArray>("exec");
        const auto row = [](const char* name, const QStringList& command, const QByteArray& exec) {
            QTest::newRow(name) << command << exec;
        };
        const QString hidden = QStringLiteral("--hidden");
        row("plain", {QStringLiteral("/opt/q/quenby"), hidden}, "/opt/q/quenby --hidden");
        row("blank", {QStringLiteral("/opt/my q/quenby"), hidden}, "\"/opt/my q/quenby\" --hidden");
        row("dollar, backquote", {QStringLiteral("/$HOME/`x`"), hidden}, "\"/\\\\$HOME/\\\\`x\\\\`\" --hidden");
        row("quotation marks", {QStringLiteral("/a\"b'c")}, "\"/a\\\\\"b'c\"");
        row("backslash", {QStringLiteral("/a\\b")}, "\"/a\\\\\\\\b\"");
        row("the shell's signs", {QStringLiteral("/a;b&c|d(e)f<g>h*i?j#k~l")}, "\"/a;b&c|d(e)f<g>h*i?j#k~l\"");
        row("other letters", {QStringLiteral("/ü/ﷺ/quenby")}, "/\xc3\xbc/\xef\xb7\xba/quenby");
        row("percent, equals in an argument", {QStringLiteral("/q"), QStringLiteral("--x=50%f")}, "/q --x=50%%f");
        row("an empty argument", {QStringLiteral("/q"), QString(), hidden}, "/q \"\" --hidden");
        row("line ends and tabs", {QStringLiteral("/q"), QStringLiteral("a\nb\tc\rd")}, "/q \"a\\nb\\tc\\rd\"");
        const QByteArray shell = "/bin/sh -c \"exec \\\\\"\\\\$0\\\\\" \\\\\"\\\\$@\\\\\"\" ";
        row("percent in the program", {QStringLiteral("/50%u/q"), hidden}, shell + "/50%%u/q --hidden");
        row("equals in the program", {QStringLiteral("/a=b c/q"), hidden}, shell + "\"/a=b c/q\" --hidden");
    }
    void commands() {
        QFETCH(QStringList, command);
        AutostartEntry entry(head);
        entry.setCommand(command);
        QTEST(entry.value("Exec"), "exec");
        QCOMPARE(AutostartEntry(entry.text()).command(), command);
        entry.setString("TryExec", command.first());
        QCOMPARE(AutostartEntry(entry.text()).string("TryExec"), command.first());

        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("a.desktop")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(entry.text());
        file.close();
        QProcess validator;
        validator.setProcessChannelMode(QProcess::MergedChannels);
        validator.start(QStringLiteral("desktop-file-validate"), {file.fileName()});
        QVERIFY(validator.waitForFinished(60'000));
        const QByteArray complaints = validator.readAll();
        QVERIFY2(complaints.isEmpty() && validator.exitCode() == 0, complaints.constData());
    }

    // As people and other programs write them.
    void otherPeoplesCommands_data() {
        QTest::addColumn<QByteArray>("exec");
        QTest::addColumn<QStringList>("command");
        const auto row = [](const QByteArray& exec, const QStringList& command) {
            QTest::newRow(exec.constData()) << exec << command;
        };
        const QString quenby = QStringLiteral("quenby");
        row("quenby %U", {quenby});
        row("  quenby\t --x  ", {quenby, QStringLiteral("--x")});
        row("'/a b/quenby' --x='c d'", {QStringLiteral("/a b/quenby"), QStringLiteral("--x=c d")});
        row("/a\\\\ b/quenby", {QStringLiteral("/a b/quenby")});
        row("sh -c \"sleep 5; quenby '%%'\"",
            {QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("sleep 5; quenby '%'")});
        row("\"/a b/quenby --x", {});
        row("%f", {});
        row("quenby \\", {quenby, QStringLiteral("\\")});
        row("quenby 100%", {quenby, QStringLiteral("100%")});
    }
    void otherPeoplesCommands() {
        QFETCH(QByteArray, exec);
        QTEST(AutostartEntry(head + "Exec=" + exec + '\n').command(), "command");
    }
};

QTEST_GUILESS_MAIN(tst_autostartentry)
#include "tst_autostartentry.moc"
