// The command line against a local Drive that misbehaves as it is told: nothing is lost, nothing is sent twice, and no
// secret comes out.

#include "tests/app/CommandLineRunner.h"
#include "tests/support/LocalDriveProcess.h"
#include "tests/support/RawHttp.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTest>

using namespace quenby::testing;

namespace {

constexpr qint64 fileSize = 4'000'000;
constexpr qint64 mebibyte = 1 << 20;

} // namespace

class CommandLineTroubleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log().constData());
        QByteArray content(fileSize, Qt::Uninitialized);
        for (qsizetype i = 0; i < content.size(); ++i)
            content[i] = static_cast<char>((i * 2654435761) >> 13);
        path_ = runner_.makeFile("film.mov", content);
        QCOMPARE(run({QStringLiteral("signin")}).exitCode, 0);
    }

    void init() { drive_.clearFaults(); }

    void uploadsSurvive_data() {
        QTest::addColumn<QByteArray>("faults");
        QTest::addColumn<QStringList>("options");
        const QStringList none;
        QTest::newRow("two cuts, chunks")
            << QByteArray(R"([{"match":{"uploadPut":true,"statusQuery":false,"nth":1,"times":2},)"
                          R"("action":{"reset":{"afterRequestBytes":300000}}}])")
            << QStringList{QStringLiteral("--chunk-size"), QStringLiteral("1000000")};
        QTest::newRow("the last reply lost") << QByteArray(R"([{"match":{"uploadPut":true,"statusQuery":false},)"
                                                           R"("action":{"drop":{"afterResponseBytes":0}}}])")
                                             << none;
        QTest::newRow("busy when announced")
            << QByteArray(R"([{"match":{"pathPrefix":"/upload/rpc","method":"POST"},"action":{"status":503}}])")
            << none;
        QTest::newRow("too many requests")
            << QByteArray(R"([{"match":{"uploadPut":true,"statusQuery":false},"action":{"status":429}}])") << none;
        QTest::newRow("expired token")
            << QByteArray(
                   R"([{"match":{"pathPrefix":"/upload/rpc","method":"POST"},"action":{"expireAccessToken":true}}])")
            << none;
    }
    void uploadsSurvive() {
        QFETCH(QByteArray, faults);
        QFETCH(QStringList, options);
        const qint64 before = receivedInAll();
        QVERIFY(drive_.orderFaults(faults));
        const Ended ended = run(QStringList{QStringLiteral("upload"), path_} + options);
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        QVERIFY(drive_.pendingFaults().isEmpty()); // it did strike
        QCOMPARE(ended.object()[QStringLiteral("bytes")].toInteger(), fileSize);
        QCOMPARE(receivedInAll() - before, fileSize); // every byte once
    }

    void lostSessionBeginsAnew() {
        QVERIFY(drive_.orderFaults(R"([{"match":{"uploadPut":true,"statusQuery":false},)"
                                   R"("action":{"loseSession":true}}])"));
        const Ended ended = run({QStringLiteral("upload"), path_});
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
    }

    // 64 MiB; 1 GiB when QUENBY_LONG_TESTS is set.
    void largeUploadGoesOnWhereItStood_data() {
        QTest::addColumn<bool>("isKilled"); // otherwise the connection is cut
        QTest::newRow("killed") << true;
        QTest::newRow("cut") << false;
    }
    void largeUploadGoesOnWhereItStood() {
        QFETCH(bool, isKilled);
        const qint64 size = (qEnvironmentVariableIsSet("QUENBY_LONG_TESTS") ? 1024 : 64) * mebibyte;
        const qint64 sentBefore = size / 2 + 1;
        QByteArray md5;
        const QString path = makeLargeFile(size, md5);
        const QByteArray action = isKilled ? R"("stall":{"seconds":600,"where":{"afterRequestBytes":%}})"
                                           : R"("reset":{"afterRequestBytes":%})";
        QVERIFY(drive_.orderFaults(R"([{"match":{"uploadPut":true,"statusQuery":false},"action":{)" +
                                   QByteArray(action).replace('%', QByteArray::number(sentBefore)) + "}}]"));
        const qint64 before = receivedInAll();
        const auto upload = runner_.start(arguments({QStringLiteral("upload"), path}));
        qint64 expected = before + size;
        if (isKilled) {
            QTRY_VERIFY_WITH_TIMEOUT(receivedInAll() - before >= sentBefore - mebibyte, 60000);
            drive_.kill();
            expected = size - heldOnDisk(); // counted from the second start
            QVERIFY2(drive_.start(), drive_.log().constData());
        }
        const Ended ended = runner_.waitFor(*upload);
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        QVERIFY(!isKilled || ended.errors.contains("trying again"));
        QCOMPARE(ended.object()[QStringLiteral("md5")].toString().toLatin1(), md5);
        QCOMPARE(receivedInAll(), expected); // nothing that was held is sent again
        QCOMPARE(ofAllUploads("duplicates"), qint64{0});
    }

    void patienceEnds() {
        QVERIFY(drive_.orderFaults(R"([{"match":{"uploadPut":true,"times":-1},"action":{"status":503}}])"));
        const Ended ended = run({QStringLiteral("upload"), path_, QStringLiteral("--patience"), QStringLiteral("1")});
        QCOMPARE(ended.exitCode, 1);
        QVERIFY2(ended.errors.contains("gave up after 1 s"), ended.errors.constData());
        QVERIFY(ended.object().contains(QStringLiteral("error")));
    }

    void oneFolderWhateverHappens_data() {
        QTest::addColumn<QByteArray>("faults");
        QTest::newRow("Plain name") << QByteArray("[]");
        QTest::newRow("It's a \\ name") << QByteArray("[]");
        QTest::newRow("Reply lost") << QByteArray(
            R"([{"match":{"rpcMethod":"drive.files.insert"},"action":{"drop":{"afterResponseBytes":0}}}])");
        QTest::newRow("Busy afterwards") << QByteArray(
            R"([{"match":{"rpcMethod":"drive.files.insert"},"action":{"status":503,"commitFirst":true}}])");
    }
    void oneFolderWhateverHappens() {
        QFETCH(QByteArray, faults);
        const QString name = QString::fromUtf8(QTest::currentDataTag());
        const QString small = runner_.makeFile("small.txt", "s");
        if (faults != "[]")
            QVERIFY(drive_.orderFaults(faults));
        for (int i = 0; i < 2; ++i) {
            const Ended ended = run({QStringLiteral("upload"), small, small, QStringLiteral("--folder"), name});
            QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        }
        QString escaped = name;
        escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('\''), QStringLiteral("\\'"));
        const QStringList folders = childrenOf(QStringLiteral("root"), QStringLiteral("title = '%1'").arg(escaped));
        QCOMPARE(folders.size(), 1);
        QCOMPARE(childrenOf(folders.constFirst(), QStringLiteral("trashed = false")).size(), 4);
    }

    void revokedSignInIsRenewed() {
        QVERIFY(
            drive_.orderFaults(R"([{"match":{"pathPrefix":"/o/oauth2/token"},"action":{"revokeRefreshToken":true}}])"));
        const Ended ended = run({QStringLiteral("about")});
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        QVERIFY(ended.errors.contains("signing in anew"));
        QVERIFY(run({QStringLiteral("about")}).errors.isEmpty());
    }

    void downloadSurvivesACut() {
        const QString id = run({QStringLiteral("upload"), path_}).object()[QStringLiteral("id")].toString();
        QVERIFY(drive_.orderFaults(
            R"([{"match":{"method":"GET","pathPrefix":"/drive/v2/files"},"action":{"truncateBody":100000}}])"));
        const QString target = runner_.path(QStringLiteral("back.mov"));
        const Ended ended = run({QStringLiteral("download"), id, QStringLiteral("-o"), target});
        QVERIFY2(ended.exitCode == 0, ended.errors.constData());
        QVERIFY(CommandLineRunner::contentOf(target) == CommandLineRunner::contentOf(path_));
    }

    // Last: everything above must have been written by then.
    void noSecretCameOut() {
        const QStringList secrets = drive_.secrets();
        QVERIFY(secrets.size() > 5);
        QByteArray written = runner_.everythingWritten();
        int logged = 0;
        QDirIterator files(runner_.path(QStringLiteral("log")), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            written += CommandLineRunner::contentOf(files.next());
            ++logged;
        }
        QVERIFY(logged > 20);
        for (const QString& secret : secrets)
            QVERIFY2(!written.contains(secret.toUtf8()), qPrintable(secret));
    }

private:
    QStringList arguments(const QStringList& call) const {
        return call + QStringList{QStringLiteral("--local"),      QStringLiteral("--json"),
                                  QStringLiteral("--local-data"), drive_.dataFolder(),
                                  QStringLiteral("--http-log"),   runner_.path(QStringLiteral("log"))};
    }
    Ended run(const QStringList& call) { return runner_.run(arguments(call)); }

    // The sum of one count since the Drive was started.
    qint64 ofAllUploads(const char* count) {
        qint64 sum = 0;
        for (const QJsonValue& upload : drive_.state()[QStringLiteral("uploads")].toArray())
            sum += upload[QLatin1String(count)].toInteger();
        return sum;
    }
    qint64 receivedInAll() { return ofAllUploads("received"); }

    // Bytes of the one upload that is on its way, as a killed Drive leaves them.
    qint64 heldOnDisk() const {
        qint64 largest = 0;
        QDirIterator parts(drive_.dataFolder() + QStringLiteral("/incoming"), QDir::Files);
        while (parts.hasNext())
            largest = std::max(largest, QFileInfo(parts.next()).size());
        return largest;
    }

    // Each of its mebibytes is different.
    QString makeLargeFile(qint64 size, QByteArray& md5) const {
        const QString path = runner_.makeFile("large.bin", {});
        QFile file(path);
        QCryptographicHash hash(QCryptographicHash::Md5);
        QByteArray block(mebibyte, 'x');
        bool isWritten = file.open(QIODevice::WriteOnly);
        for (qint64 i = 0; isWritten && i < size / mebibyte; ++i) {
            block.replace(0, 10, QByteArray::number(i).rightJustified(10, '0'));
            hash.addData(block);
            isWritten = file.write(block) == block.size();
        }
        if (!isWritten)
            qFatal("The large file can't be written.");
        md5 = hash.result().toHex();
        return path;
    }

    QStringList childrenOf(const QString& folder, const QString& q) {
        const QJsonObject call{
            {QStringLiteral("jsonrpc"), QStringLiteral("2.0")},
            {QStringLiteral("id"), QStringLiteral("1")},
            {QStringLiteral("apiVersion"), QStringLiteral("v2")},
            {QStringLiteral("method"), QStringLiteral("drive.children.list")},
            {QStringLiteral("params"), QJsonObject{{QStringLiteral("folderId"), folder}, {QStringLiteral("q"), q}}}};
        const RawReply reply = RawHttp::exchange(
            drive_.url(), RawHttp::request("POST", "/rpc",
                                           {"Authorization: Bearer " + drive_.newAccessToken(),
                                            "Content-Type: application/json-rpc", LocalDriveProcess::controlHeader()},
                                           QJsonDocument(call).toJson()));
        QStringList identifiers;
        const QJsonObject result = QJsonDocument::fromJson(reply.body)[QStringLiteral("result")].toObject();
        for (const QJsonValue& item : result[QStringLiteral("items")].toArray())
            identifiers.append(item[QStringLiteral("id")].toString());
        return identifiers;
    }

    LocalDriveProcess drive_{{QStringLiteral("--quiet")}};
    CommandLineRunner runner_;
    QString path_;
};

QTEST_GUILESS_MAIN(CommandLineTroubleTest)
#include "tst_commandline_trouble.moc"
