// The tool as a child process: how its ends are understood. The children are small scripts.
#include "platform/linux/screencapture/ProcessScreenCaptureTool.h"
#include "tests/platform/fakes/FakeScreenCaptureTool.h"

#include <QDir>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace quenby;
using namespace quenby::testing;
using Command = ProcessScreenCaptureTool::Command;

namespace {

constexpr int patience = 20'000; // ms

// The script finds the picture's path in $1.
Command shell(const QString& script) {
    return {QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh")}};
}

struct Outcome {
    int times = 0;
    MaybeError error;

    ScreenCaptureTool::Ended told() {
        return [this](const MaybeError& end) {
            ++times;
            error = end;
        };
    }
    QString reason() const { return error ? error->detail(errorKey::reason).toString() : QString(); }
};

} // namespace

class tst_ProcessScreenCaptureTool : public QObject {
    Q_OBJECT

    QByteArray path() const { return QFile::encodeName(folder_.filePath(QStringLiteral("a b.png"))); }

private Q_SLOTS:
    void ends_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QByteArray>("cancelWord");
        QTest::addColumn<QString>("reason"); // a part of it; empty: no trouble
        QTest::newRow("done") << QStringLiteral("echo picture > \"$1\"") << QByteArray() << QString();
        QTest::newRow("left") << QStringLiteral("exit 0") << QByteArray() << QString();
        QTest::newRow("trouble") << QStringLiteral("echo one >&2; echo 'No  screen.' >&2; exit 1") << QByteArray()
                                 << QStringLiteral("No screen.");
        QTest::newRow("trouble without a word")
            << QStringLiteral("exit 1") << QByteArray() << QStringLiteral("sh could not");
        QTest::newRow("too many words") << QStringLiteral("yes | head -c 1000000 >&2; exit 1") << QByteArray()
                                        << QStringLiteral("y");
        QTest::newRow("another tool's way to leave")
            << QStringLiteral("echo Selection was cancelled. >&2; exit 1") << QByteArray("cancel") << QString();
        QTest::newRow("a crash") << QStringLiteral("kill -SEGV $$") << QByteArray()
                                 << QStringLiteral("sh ended unexpectedly. Take");
    }
    void ends() {
        QFETCH(QString, script);
        QFETCH(QByteArray, cancelWord);
        QFETCH(QString, reason);
        Command command = shell(script);
        command.cancelWord = cancelWord;
        ProcessScreenCaptureTool tool({{QStringLiteral("/nowhere/tool"), {}}, command});
        QCOMPARE(tool.unavailableBecause(), QString());
        // Twice: an end leaves room for the next one.
        for (int time = 1; time <= 2; ++time) {
            Outcome outcome;
            tool.capture(path(), this, outcome.told());
            QCOMPARE(outcome.times, 0);
            QTRY_COMPARE_WITH_TIMEOUT(outcome.times, 1, patience);
            QCOMPARE(outcome.error.has_value(), !reason.isEmpty());
            QVERIFY2(outcome.reason().contains(reason), qPrintable(outcome.reason()));
            QVERIFY(outcome.reason().size() <= 1000);
        }
        QCOMPARE(QFile::exists(QFile::decodeName(path())), script.contains(QLatin1String("picture")));
        QFile::remove(QFile::decodeName(path()));
    }

    void noTool() {
        ProcessScreenCaptureTool tool(
            {{QStringLiteral("/nowhere/tool"), {}}, {QStringLiteral("quenby-no-such-tool"), {}}});
        Outcome outcome;
        tool.capture(path(), this, outcome.told());
        QTRY_COMPARE_WITH_TIMEOUT(outcome.times, 1, patience);
        QVERIFY(outcome.error->is(errorDomain::posix, ENOENT));
        QCOMPARE(outcome.reason(), tool.unavailableBecause());
        QVERIFY(outcome.reason().contains(QLatin1String("quenby-screencapture")));
    }

    // It is a file and may be run, but is no program.
    void aToolThatDoesNotStart() {
        QFile file(folder_.filePath(QStringLiteral("broken")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("\x7f"
                                                              "ELF nothing") > 0);
        file.close();
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        ProcessScreenCaptureTool tool({{file.fileName(), {}}});
        Outcome outcome;
        tool.capture(path(), this, outcome.told());
        QTRY_COMPARE_WITH_TIMEOUT(outcome.times, 1, patience);
        QVERIFY2(outcome.reason().contains(QLatin1String("broken could not be started")), qPrintable(outcome.reason()));
    }

    void oneAtATime() {
        const auto check = [this](ScreenCaptureTool& tool) {
            Outcome first;
            Outcome second;
            tool.capture(path(), this, first.told());
            tool.capture(path(), this, second.told());
            QTRY_COMPARE_WITH_TIMEOUT(second.times, 1, patience);
            QVERIFY(second.error->is(errorDomain::posix, EBUSY));
            QVERIFY(!second.reason().isEmpty());
            QCOMPARE(first.times, 0);
        };
        ProcessScreenCaptureTool tool({shell(QStringLiteral("exec sleep 1000"))});
        check(tool);
        FakeScreenCaptureTool fake;
        check(fake);
    }

    // The child's end of the pipe is closed when it is gone, however stubborn it is.
    void itsEndIsTheChildsEnd() {
        QFile note(folder_.filePath(QStringLiteral("pid")));
        auto tool = std::make_unique<ProcessScreenCaptureTool>(QList<Command>{
            shell(QStringLiteral("trap '' TERM; echo $$ > '%1.new'; mv '%1.new' '%1'; while :; do sleep 0.01; done")
                      .arg(note.fileName()))});
        Outcome outcome;
        tool->capture(path(), this, outcome.told());
        QTRY_VERIFY_WITH_TIMEOUT(note.exists(), patience);
        QVERIFY(note.open(QIODevice::ReadOnly));
        const pid_t pid = note.readAll().trimmed().toInt();
        QVERIFY(pid > 0 && ::kill(pid, 0) == 0);
        tool.reset();
        QCOMPARE(::kill(pid, 0), -1);
        QCoreApplication::processEvents();
        QCOMPARE(outcome.times, 0);
    }

private:
    QTemporaryDir folder_;
};

QTEST_GUILESS_MAIN(tst_ProcessScreenCaptureTool)
#include "tst_ProcessScreenCaptureTool.moc"
