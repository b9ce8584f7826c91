// The programs as people run them: quenby starts the local Drive by itself and every verb does what it says.

#include "tests/app/CommandLineRunner.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <csignal>

#include <sys/stat.h>

using namespace quenby::testing;

namespace {

QStringList words(const char* line) { return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts); }

QString md5(const QByteArray& content) {
    return QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex());
}

// Content that has no pattern, the same each time.
QByteArray content(qsizetype size, unsigned seed) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

} // namespace

class CommandLineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        runner_ = std::make_unique<CommandLineRunner>();
        const Ended ended = runner_->run(words("signin --local --json"));
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        QVERIFY(ended.object()[QStringLiteral("signedIn")].toBool());
        QVERIFY(ended.object()[QStringLiteral("emailAddress")].toString().contains(QLatin1Char('@')));
        struct stat status {};
        QCOMPARE(::stat(QFile::encodeName(runner_->tokenPath()).constData(), &status), 0);
        QCOMPARE(int(status.st_mode & 07777), 0600);
    }
    void cleanupTestCase() { runner_.reset(); }

    void wrongUse_data() {
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("complaint");
        const auto row = [](const char* line, int exitCode, const char* complaint) {
            QTest::newRow(line) << exitCode << QByteArray(complaint);
        };
        row("", 2, "Usage: quenby");
        row("fly", 2, "is no command");
        row("about --local --fast", 2, "is no option");
        row("download --local", 2, "exactly one");
        row("about", 1, "start Quenby and sign in there");
        row("upload missing.txt", 1, "start Quenby and sign in there");
        row("signin", 1, "no session bus");
        row("upload missing.txt --local", 1, "missing.txt: no such file");
        row("download nosuchid --local", 1, "nosuchid: ");
    }
    void wrongUse() {
        QFETCH(int, exitCode);
        QFETCH(QByteArray, complaint);
        const Ended ended = runner_->run(words(QTest::currentDataTag()));
        QCOMPARE(ended.exitCode, exitCode);
        QVERIFY2(ended.errors.contains(complaint), ended.errors.constData());
        QVERIFY(ended.output.isEmpty());
        if (exitCode == 1)
            QCOMPARE(ended.errors.count('\n'), 1);
    }

    void localDataThatIsNoTextIsRefused() {
        for (const char* line : {"exec \"$0\" about --local --local-data \"$(printf 'caf\\351')\"",
                                 "d=$(printf 'caf\\351') && mkdir \"$d\" && cd \"$d\" && \"$0\" about --local "
                                 "--local-data below"}) {
            const Ended refused = runner_->runInShell(QString::fromLatin1(line));
            QCOMPARE(refused.exitCode, 1);
            QVERIFY2(refused.errors.contains("caf\\xe9") && refused.errors.contains("choose another"),
                     refused.errors.constData());
        }
    }

    void helpAndVersion() {
        const Ended help = runner_->run(words("upload --help"));
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.output.contains("--chunk-size BYTES") && help.errors.isEmpty());
        QCOMPARE(runner_->run(words("--version")).output, QByteArray("quenby 0.1.0\n"));
    }

    void about() {
        const Ended ended = runner_->run(words("about --local --json"));
        QCOMPARE(ended.exitCode, 0);
        const QJsonObject about = ended.object();
        QVERIFY(about[QStringLiteral("bytesTotal")].toInteger() > 0);
        QVERIFY(about[QStringLiteral("quota")].toString().contains(QStringLiteral("% of ")));
        const Ended text = runner_->run(words("about --local"));
        QVERIFY(text.output.contains(about[QStringLiteral("emailAddress")].toString().toUtf8()));
    }

    void damagedSignInIsReplaced() {
        runner_->makeFile("state/quenby/local-drive-token", "rubbish");
        const Ended ended = runner_->run(words("about --local"));
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        QVERIFY(ended.errors.contains("damaged") && ended.errors.contains("signing in anew"));
        QVERIFY(CommandLineRunner::contentOf(runner_->tokenPath()).contains("refresh_token="));
        QVERIFY(runner_->run(words("about --local")).errors.isEmpty());
    }

    void roundTrip_data() {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("chunkSize"); // 0: none
        QTest::newRow("empty") << 0 << 0;
        QTest::newRow("one byte") << 1 << 0;
        QTest::newRow("remainder folded in") << 501000 << 500000;
        QTest::newRow("several chunks") << 1300001 << 500000;
        QTest::newRow("one piece") << 1300001 << 0;
    }
    void roundTrip() {
        QFETCH(int, size);
        QFETCH(int, chunkSize);
        const QByteArray sent = content(size, unsigned(size));
        const QString path = runner_->makeFile("round/trip.bin", sent);
        QStringList arguments{QStringLiteral("upload"), path, QStringLiteral("--local"), QStringLiteral("--json")};
        if (chunkSize)
            arguments += {QStringLiteral("--chunk-size"), QString::number(chunkSize)};
        const Ended ended = runner_->run(arguments);
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        const QJsonObject uploaded = ended.object();
        QCOMPARE(uploaded[QStringLiteral("path")].toString(), path);
        QCOMPARE(uploaded[QStringLiteral("title")].toString(), QStringLiteral("trip.bin"));
        QCOMPARE(uploaded[QStringLiteral("bytes")].toInteger(), size);
        QCOMPARE(uploaded[QStringLiteral("md5")].toString(), md5(sent));

        const QString target = runner_->path(QStringLiteral("back.bin"));
        const Ended back = runner_->run({QStringLiteral("download"), uploaded[QStringLiteral("id")].toString(),
                                         QStringLiteral("--local"), QStringLiteral("-o"), target});
        QVERIFY2(back.exitCode == 0, back.errors.constData());
        QCOMPARE(CommandLineRunner::contentOf(target), sent);
    }

    void folderWithOddNames() {
        QList<QByteArray> names{"a b",
                                "-dash",
                                "line\nbreak",
                                "quote\"'\\",
                                "gr\xC3\xBC"
                                "n",
                                "caf\xE9",
                                ".hidden",
                                "%41&x=1?#"};
        for (int i = names.size(); i < 200; ++i)
            names.append(QByteArray::number(i));
        QHash<QString, QString> expected; // title to MD5
        for (const QByteArray& name : names) {
            runner_->makeFile("odd/" + name, name);
            expected.insert(QString::fromUtf8(name), md5(name));
        }
        runner_->makeFile("odd/deeper/below", "x");
        const Ended ended = runner_->run({QStringLiteral("upload"), runner_->path(QStringLiteral("odd")),
                                          QStringLiteral("--local"), QStringLiteral("--json")});
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        QVERIFY(ended.errors.contains("left out what is no regular file: 1"));
        QHash<QString, QString> uploaded;
        for (const QJsonObject& object : ended.objects()) {
            uploaded.insert(object[QStringLiteral("title")].toString(), object[QStringLiteral("md5")].toString());
            QVERIFY(!object[QStringLiteral("id")].toString().isEmpty());
        }
        QCOMPARE(ended.objects().size(), names.size());
        QCOMPARE(uploaded, expected);
        QVERIFY(ended.output.contains("caf\\\\xe9")); // the path that was opened, told apart from the title
    }

    void oneFailureStopsNoOther() {
        const QString good = runner_->makeFile("mixed/good", "g");
        const QString other = runner_->makeFile("mixed/other", "o");
        const QString pipe = runner_->path(QStringLiteral("mixed/pipe"));
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        const QString missing = runner_->path(QStringLiteral("mixed/missing"));
        const Ended ended = runner_->run({QStringLiteral("upload"), QStringLiteral("--local"), QStringLiteral("--json"),
                                          good, pipe, missing, QStringLiteral("/dev/null"), other});
        QCOMPARE(ended.exitCode, 1);
        QStringList done;
        QStringList failed;
        for (const QJsonObject& object : ended.objects())
            (object.contains(QStringLiteral("error")) ? failed : done)
                .append(object[QStringLiteral("path")].toString());
        QCOMPARE(QSet<QString>(done.begin(), done.end()), (QSet<QString>{good, other}));
        QCOMPARE(QSet<QString>(failed.begin(), failed.end()),
                 (QSet<QString>{pipe, missing, QStringLiteral("/dev/null")}));
        QVERIFY(ended.errors.contains("is a pipe") && ended.errors.contains("is a device"));
    }

    void changesAreListedAndWatched() {
        const QString first = runner_->makeFile("watched/first.txt", "1");
        QCOMPARE(runner_->run({QStringLiteral("upload"), QStringLiteral("--local"), first}).exitCode, 0);
        const Ended listed = runner_->run(words("changes --local --json"));
        QCOMPARE(listed.exitCode, 0);
        const QJsonObject last = listed.objects().constLast();
        QCOMPARE(last[QStringLiteral("title")].toString(), QStringLiteral("first.txt"));
        QCOMPARE(last[QStringLiteral("status")].toString(), QStringLiteral("new"));

        runner_->setEnvironment(QStringLiteral("QUENBY_POLL_SECONDS"), QStringLiteral("0.05"));
        const auto watcher = runner_->start(words("changes --local --watch"));
        QByteArray seen;
        QVERIFY(CommandLineRunner::waitForText(*watcher, QProcess::StandardOutput, "first.txt", seen));
        const QString second = runner_->makeFile("watched/second.txt", "2");
        QCOMPARE(runner_->run({QStringLiteral("upload"), QStringLiteral("--local"), second}).exitCode, 0);
        QVERIFY(CommandLineRunner::waitForText(*watcher, QProcess::StandardOutput, "second.txt", seen));
        QCOMPARE(seen.count("first.txt"), 1); // told once
        QCOMPARE(::kill(static_cast<pid_t>(watcher->processId()), SIGINT), 0);
        QCOMPARE(runner_->waitFor(*watcher).exitCode, 128 + SIGINT);
    }

    // The local Drive ends under the eyes of the watcher, and comes back as one that gives changes no numbers.
    void changesAreWatchedWhenTheirNumbersEnd() {
        CommandLineRunner runner;
        const QString first = runner.makeFile("first.txt", "1");
        QCOMPARE(runner.run({QStringLiteral("upload"), QStringLiteral("--local"), first}).exitCode, 0);
        runner.setEnvironment(QStringLiteral("QUENBY_POLL_SECONDS"), QStringLiteral("0.05"));
        runner.setEnvironment(QStringLiteral("QUENBY_LOCALDRIVE_WITHOUT_CHANGE_IDS"), QStringLiteral("1"));
        const auto watcher = runner.start(words("changes --local --watch --json"));
        QByteArray seen;
        QVERIFY(CommandLineRunner::waitForText(*watcher, QProcess::StandardOutput, "first.txt", seen));
        QCOMPARE(::kill(static_cast<pid_t>(runner.localDrivePid()), SIGKILL), 0);
        int number = 1;
        for (const char* name : {"second.txt", "third.txt", "fourth.txt"}) {
            const QString path = runner.makeFile(name, QByteArray::number(++number));
            QCOMPARE(runner.run({QStringLiteral("upload"), QStringLiteral("--local"), path}).exitCode, 0);
            QVERIFY(CommandLineRunner::waitForText(*watcher, QProcess::StandardOutput, name, seen));
        }
        QCOMPARE(::kill(static_cast<pid_t>(watcher->processId()), SIGINT), 0);
        const Ended ended = runner.waitFor(*watcher);
        QCOMPARE(ended.exitCode, 128 + SIGINT);
        seen += ended.output;
        QCOMPARE(seen.count("\"status\""), 4); // each is told once
        QCOMPARE(seen.count("\"change\""), 1); // and only the first had a number
    }

    void downloadsNeverOverwriteUnasked() {
        const QString path = runner_->makeFile("named/.. report.txt", "fresh");
        const Ended ended =
            runner_->run({QStringLiteral("upload"), QStringLiteral("--local"), QStringLiteral("--json"), path});
        const QString id = ended.object()[QStringLiteral("id")].toString();
        runner_->makeFile("report.txt", "old");
        const QStringList download{QStringLiteral("download"), id, QStringLiteral("--local")};
        for (const char* name : {"report (2).txt", "report (3).txt"}) {
            const Ended saved = runner_->run(download + QStringList{QStringLiteral("--json")});
            QVERIFY2(saved.exitCode == 0, saved.errors.constData());
            QCOMPARE(saved.object()[QStringLiteral("path")].toString(), QString::fromLatin1(name));
            QCOMPARE(CommandLineRunner::contentOf(runner_->path(QString::fromLatin1(name))), QByteArray("fresh"));
        }
        QCOMPARE(CommandLineRunner::contentOf(runner_->path(QStringLiteral("report.txt"))), QByteArray("old"));
        QCOMPARE(runner_->run(download + QStringList{QStringLiteral("-o"), QStringLiteral("report.txt")}).exitCode, 0);
        QCOMPARE(CommandLineRunner::contentOf(runner_->path(QStringLiteral("report.txt"))), QByteArray("fresh"));
        const QString below = QStringLiteral("report.txt/below");
        const Ended refused = runner_->run(download + QStringList{QStringLiteral("-o"), below});
        QCOMPARE(refused.exitCode, 1);
        QVERIFY2(refused.errors.contains("can't save into the folder"), refused.errors.constData());
    }

    void noRoomLeavesNoPartialFile() {
        const QString path = runner_->makeFile("big.bin", content(300000, 7));
        const Ended ended =
            runner_->run({QStringLiteral("upload"), QStringLiteral("--local"), QStringLiteral("--json"), path});
        QDir().mkpath(runner_->path(QStringLiteral("small")));
        // A limit on the size of files stands for a full disk.
        const Ended refused =
            runner_->runInShell(QStringLiteral("cd small && ulimit -f 100 && exec \"$0\" download %1 --local")
                                    .arg(ended.object()[QStringLiteral("id")].toString()));
        QCOMPARE(refused.exitCode, 1);
        QVERIFY2(refused.errors.contains("make room"), refused.errors.constData());
        QCOMPARE(QDir(runner_->path(QStringLiteral("small")))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList());
    }

private:
    std::unique_ptr<CommandLineRunner> runner_;
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "tst_commandline.moc"
