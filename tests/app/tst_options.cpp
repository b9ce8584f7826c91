// The command line: what is understood, what is refused, and that the help knows every option.

#include "app/cli/Options.h"

#include <QTest>

using namespace quenby;

namespace {

QList<QByteArray> words(const char* line) {
    return QByteArray(line).isEmpty() ? QList<QByteArray>() : QByteArray(line).split(' ');
}

} // namespace

class OptionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refused_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("complaint"); // a part of the reason
        const auto row = [](const char* line, const char* complaint) {
            QTest::newRow(line) << QByteArray(line) << QString::fromLatin1(complaint);
        };
        row("--json", "does not go with the desktop program");
        row("--status-item top", "makes no sense");
        row("about --hidden", "does not go with about");
        row("file://elsewhere.example/a.txt", "not on this computer");
        row("fly", "\"fly\" is no command");
        row("about --fast", "\"--fast\" is no option");
        row("about -x", "\"-x\" is no option");
        row("about extra", "about takes no argument");
        row("about --local=yes", "takes no value");
        row("upload", "at least one file");
        row("upload --folder", "needs a value: NAME");
        row("upload a --folder=", "makes no sense as NAME");
        row("upload a --chunk-size many", "makes no sense as BYTES");
        row("upload a --chunk-size 0", "makes no sense as BYTES");
        row("upload a --chunk-size -5", "makes no sense as BYTES");
        row("upload a --patience never", "makes no sense as SECONDS");
        row("upload a --patience nan", "makes no sense as SECONDS");
        row("upload a --local-data=", "makes no sense as DIR");
        row("download", "exactly one");
        row("download a b", "exactly one");
        row("about --folder x", "\"--folder\" does not go with about");
        row("upload a --watch", "\"--watch\" does not go with upload");
        row("--watch about", "\"--watch\" does not go with about");
    }
    void refused() {
        QFETCH(QByteArray, line);
        QFETCH(QString, complaint);
        const auto options = parseOptions(words(line.constData()));
        QVERIFY(!options);
        QVERIFY2(options.error().description().contains(complaint), qPrintable(options.error().description()));
    }

    void everyValueArrives() {
        const auto upload = parseOptions(words("--local upload a --folder Reports --chunk-size=500000 b --no-verify "
                                               "--patience 0.5 --json --quiet --local-data /d --http-log l -- --c"));
        QVERIFY(upload);
        QCOMPARE(upload->verb, Verb::upload);
        QVERIFY(upload->local && upload->json && upload->quiet && !upload->verify);
        QCOMPARE(upload->files, (QList<QByteArray>{"a", "b", "--c"}));
        QCOMPARE(*upload->folder, QStringLiteral("Reports"));
        QCOMPARE(upload->chunkSize, 500000u);
        QCOMPARE(upload->patience, std::chrono::milliseconds(500));
        QCOMPARE(upload->localData, QByteArray("/d"));
        QCOMPARE(upload->httpLog, QByteArray("l"));

        const auto download = parseOptions(words("download ID -o out"));
        QVERIFY(download);
        QCOMPARE(download->fileId, QStringLiteral("ID"));
        QCOMPARE(download->output, QByteArray("out"));

        const auto changes = parseOptions(words("changes --watch --interval=2"));
        QVERIFY(changes && changes->watch);
        qputenv("QUENBY_POLL_SECONDS", "0.25");
        QCOMPARE(changes->pollInterval(), std::chrono::milliseconds(2000));
        QCOMPARE(Options().pollInterval(), std::chrono::milliseconds(250));
        qputenv("QUENBY_POLL_SECONDS", "soon");
        QCOMPARE(Options().pollInterval(), std::chrono::milliseconds(30000));
    }

    void filesWithoutCommandAreForTheDesktopProgram() {
        const auto given =
            parseOptions({"--local", "/a/b.txt", "file:///c%20d/caf%E9", "file://localhost/e", "upload"});
        QVERIFY(given && given->local);
        QCOMPARE(given->verb, Verb::desktop);
        QCOMPARE(given->files.first(3), (QList<QByteArray>{"/a/b.txt", "/c d/caf\xE9", "/e"}));
        QVERIFY(given->files.at(3).startsWith('/') && given->files.at(3).endsWith("/upload"));
        const auto none = parseOptions({"--hidden", "--status-item", "strip"});
        QVERIFY(none && none->verb == Verb::desktop && none->hidden);
        QCOMPARE(none->statusItemPlace, QByteArray("strip"));
    }

    void namesStayBytes() {
        const auto options = parseOptions({"upload", "caf\xE9.txt", "-"});
        QVERIFY(options);
        QCOMPARE(options->files, (QList<QByteArray>{"caf\xE9.txt", "-"}));
        QVERIFY(!parseOptions({"upload", "a", "--folder", "caf\xE9"})); // a title must be text
    }

    void helpAndVersionExcuseEverything() {
        for (const char* line : {"--help", "upload --help", "--version", "about -h --watch"})
            QVERIFY2(parseOptions(words(line)), line);
    }

    void helpTellsWhatGoesWithTheVerb() {
        QVERIFY(usageText(Verb::desktop).contains(QStringLiteral("download ID")));
        QVERIFY(usageText(Verb::upload).contains(QStringLiteral("--chunk-size BYTES")));
        QVERIFY(!usageText(Verb::upload).contains(QStringLiteral("--watch")));
        QVERIFY(usageText(Verb::download).contains(QStringLiteral("-o, --output FILE")));
    }
};

QTEST_GUILESS_MAIN(OptionsTest)
#include "tst_options.moc"
