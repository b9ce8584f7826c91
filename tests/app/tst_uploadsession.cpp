// What one upload asks of the Drive, in which order, and what it has kept by then: identifiers, locations that are lost
// or too old, files that are there already, and pauses that the Drive asks for.

#include "app/uploads/transfer/GeneratedIdentifiers.h"
#include "app/uploads/transfer/UploadRun.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "tests/support/HastyTimeSource.h"
#include "tests/support/ManualTimeSource.h"
#include "tests/support/ScriptedServer.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

const QByteArray content = "content";
const QString oldLocation = QStringLiteral("/s/old");

QByteArray fileJSON(const QByteArray& bytes, const QString& identifier) {
    const QByteArray sum = QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex();
    return "{\"kind\": \"drive#file\", \"id\": \"" + identifier.toUtf8() + "\", \"md5Checksum\": \"" + sum +
           "\", \"fileSize\": \"" + QByteArray::number(bytes.size()) + "\"}";
}

Answer json(int status, const QByteArray& body, std::vector<HeaderFields::Field> fields = {}) {
    fields.emplace_back("Content-Type", "application/json");
    return Answer::with(status, body, fields);
}

Answer result(const QByteArray& object) {
    return json(200, "{\"jsonrpc\": \"2.0\", \"id\": \"1\", \"result\": " + object + '}');
}

// As the Drive's two roads tell an error.
Answer refusal(int status, const QByteArray& reason, const char* list, std::vector<HeaderFields::Field> fields = {}) {
    return json(status,
                "{\"error\": {\"code\": " + QByteArray::number(status) + ", \"message\": \"No\", \"" + list +
                    "\": [{\"reason\": \"" + reason + "\"}]}}",
                std::move(fields));
}

} // namespace

class UploadSessionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        QFile file(folder_->filePath(QStringLiteral("a.txt")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        server_ = std::make_unique<ScriptedServer>();
        server_->setHandler([this](const ReceivedRequest& request) { return answer(request); });
        hasty_ = std::make_shared<HastyTimeSource>();
        service_ = std::make_shared<GTLServiceDrive>(Endpoints::localDrive(server_->url(QString())),
                                                     GTMHTTPFetcherService::create(hasty_));
        service_->ticketSettings().retryEnabled = true;
        settings_ = {};
        settings_.identifiers = std::make_shared<GeneratedIdentifiers>(service_);
        settings_.keep = [this](const UploadSession& session, const std::function<void()>& kept) {
            QTimer::singleShot(0, this, [this, session, kept] {
                kept_ = session;
                kept();
            });
        };
        kept_ = {};
        lines_.clear();
        announcements_.clear();
        puts_.clear();
        looks_.clear();
        outcome_.reset();
        sessions_ = 0;
        givenOut_ = 0;
        isRpc_ = true;
    }
    void cleanup() { run_.reset(); }

    void runs_data() {
        QTest::addColumn<QString>("location"); // of an earlier run; empty: there was none
        QTest::addColumn<int>("age");          // of it, in hours
        QTest::addColumn<QByteArray>("announcements");
        QTest::addColumn<QByteArray>("puts");
        QTest::addColumn<QByteArray>("looks");
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<QString>("complaint"); // empty: success
        const QString none;
        const auto fresh = [](const char* name, const char* announcements, const char* puts, const char* looks,
                              const char* lines, const char* complaint = "") {
            QTest::newRow(name) << QString() << 0 << QByteArray(announcements) << QByteArray(puts) << QByteArray(looks)
                                << QByteArray(lines) << QString::fromLatin1(complaint);
        };
        const auto taken = [](const char* name, int age, const char* puts, const char* lines) {
            QTest::newRow(name) << oldLocation << age << QByteArray() << QByteArray(puts) << QByteArray()
                                << QByteArray(lines) << QString();
        };
        fresh("without trouble", "", "", "", "ids, announce ID1, /s/1 0-6");
        fresh("no identifiers", "none", "", "", "ids, announce, /s/1 0-6");
        taken("taken up", 1, "hold", "/s/old *, /s/old 3-6");
        taken("location too old", 7 * 24, "", "announce ID0, /s/1 0-6");
        taken("clock was set back", -1, "", "announce ID0, /s/1 0-6");
        taken("location forgotten", 1, "404", "/s/old *, announce ID0, /s/1 0-6");
        fresh("location forgotten while it retries", "", "503 410", "",
              "ids, announce ID1, /s/1 0-6, /s/1 *, announce ID1, /s/2 0-6");
        fresh("there already", "409", "", "same", "ids, announce ID1, look");
        fresh("there already, told later", "409", "", "429 same", "ids, announce ID1, look, look");
        fresh("another session was faster", "", "409", "same", "ids, announce ID1, /s/1 0-6, look");
        fresh("another file is there", "409", "", "other", "ids, announce ID1, look", "differs from the file");
        fresh("another size is there", "409", "", "longer", "ids, announce ID1, look", "8 bytes instead of 7");
        fresh("said to be there, not shown", "409", "", "gone", "ids, announce ID1, look", "does not show it");
        fresh("news of the end lost for good", "ok 409", "reset 404", "same",
              "ids, announce ID1, /s/1 0-6, /s/1 *, announce ID1, look");
        fresh("news of the end unreadable", "", "garbage", "same", "ids, announce ID1, /s/1 0-6, look");
        fresh("calls are closed from now on", "410", "", "", "ids, announce ID1, announce ID1, /s/2 0-6");
        fresh("full", "403", "", "", "ids, announce ID1", "empty its trash or buy storage, then retry");
        fresh("full at the end", "", "403", "", "ids, announce ID1, /s/1 0-6", "empty its trash");
    }
    void runs() {
        QFETCH(QString, location);
        QFETCH(int, age);
        QFETCH(QByteArray, lines);
        QFETCH(QString, complaint);
        QFETCH(QByteArray, announcements);
        QFETCH(QByteArray, puts);
        QFETCH(QByteArray, looks);
        announcements_ = answers(announcements);
        puts_ = answers(puts);
        looks_ = answers(looks);
        if (!location.isEmpty())
            kept_ = {QStringLiteral("ID0"), server_->url(location), hasty_->now().addSecs(-3600LL * age), 2};
        settings_.session = kept_;
        start(hasty_);
        QTRY_VERIFY_WITH_TIMEOUT(outcome_, 30000);
        QCOMPARE(lines_.join(", "), lines);
        QCOMPARE(outcome_->ok(), complaint.isEmpty());
        if (*outcome_)
            QCOMPARE((*outcome_)->md5,
                     QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex()));
        else
            QVERIFY2(outcome_->error().description().contains(complaint), qPrintable(outcome_->error().description()));
    }

    // Each step waits for its session to be kept, however long that takes.
    void nothingIsSentBeforeItIsKept() {
        std::vector<std::function<void()>> waiting;
        QList<UploadSession> told;
        settings_.keep = [&](const UploadSession& session, std::function<void()> kept) {
            told.append(session);
            waiting.push_back(std::move(kept));
        };
        start(hasty_);
        QTRY_COMPARE(told.size(), 1);
        QVERIFY(told.last().identifier == QStringLiteral("ID1") && told.last().location.isEmpty());
        callThere();
        QCOMPARE(lines_.join(", "), "ids, look");
        waiting.back()();
        kept_ = told.last();
        QTRY_COMPARE(told.size(), 2);
        QCOMPARE(told.last().location.path(), QStringLiteral("/s/1"));
        QVERIFY(told.last().hasValidLocation(hasty_->now()));
        callThere();
        QCOMPARE(lines_.join(", "), "ids, look, announce ID1, look");
        kept_ = told.last();
        waiting.front()(); // once more, which means nothing
        run_.reset();
        waiting.back()(); // too late
        callThere();
        QCOMPARE(lines_.join(", "), "ids, look, announce ID1, look, look");
    }

    // Not only when the upload goes on: the program may end before.
    void lostLocationIsForgottenAtOnce() {
        const auto time = std::make_shared<ManualTimeSource>();
        kept_ = {QStringLiteral("ID0"), server_->url(oldLocation), time->now(), 2};
        settings_.session = kept_;
        puts_ = answers("410");
        start(time);
        QTRY_VERIFY(time->pendingTimers() > 0);
        QCOMPARE(kept_, (UploadSession{QStringLiteral("ID0"), {}, {}, 0}));
    }

    void identifierOfTheQueryCounts() {
        const auto file = GTLDriveFile::object();
        file->setIdentifier(QStringLiteral("MINE"));
        settings_.query = GTLQueryDrive::queryForFilesInsertWithObject(
            file, GTLUploadParameters::uploadParametersWithFileHandle(nullptr, "text/plain"));
        start(hasty_);
        QTRY_VERIFY(outcome_);
        QCOMPARE(lines_.join(", "), "announce MINE, /s/1 0-6");
    }

    void pausesTheDriveAsksFor_data() {
        QTest::addColumn<bool>("isChunk");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("list"); // where the reason stands; empty: no body
        for (const bool isChunk : {false, true}) {
            const char* where = isChunk ? "chunk" : "announcement";
            QTest::addRow("%s, 429 alone", where) << isChunk << 429 << QByteArray();
            QTest::addRow("%s, 403 in calls' words", where) << isChunk << 403 << QByteArray("data");
            QTest::addRow("%s, 403 in resources' words", where) << isChunk << 403 << QByteArray("errors");
        }
    }
    void pausesTheDriveAsksFor() {
        QFETCH(bool, isChunk);
        QFETCH(int, status);
        QFETCH(QByteArray, list);
        const HeaderFields::Field pause{"Retry-After", "120"};
        const Answer slower = list.isEmpty() ? Answer::with(status, {}, {pause})
                                             : refusal(status, "userRateLimitExceeded", list.constData(), {pause});
        (isChunk ? puts_ : announcements_) = {slower};
        const auto time = std::make_shared<ManualTimeSource>();
        start(time);
        QTRY_VERIFY(time->pendingTimers() > 0);
        QVERIFY(time->nextDelay() >= 120s);
        const QByteArrayList before = lines_;
        run_->tryNow();
        QVERIFY(time->nextDelay() >= 120s);
        time->advance(time->nextDelay());
        QTRY_VERIFY(outcome_);
        QVERIFY2(outcome_->ok(), outcome_->ok() ? "" : qPrintable(outcome_->error().description()));
        QCOMPARE(lines_.sliced(before.size()).join(", "),
                 isChunk ? QByteArray("/s/1 *") : QByteArray("announce ID1, /s/2 0-6"));
    }

    // Many at a time, each once; trouble is told, and the next one asks again.
    void identifiersAreGivenOnce() {
        GeneratedIdentifiers pool(service_);
        QStringList taken;
        const auto take = [this, &pool, &taken] {
            return pool.take(this, [&taken](const Result<QString>& identifier) {
                taken.append(identifier.valueOr(QStringLiteral("trouble")));
            });
        };
        announcements_ = {json(500, "{\"error\": {\"code\": 500, \"message\": \"No\"}}")};
        take();
        QTRY_COMPARE(taken, QStringList{QStringLiteral("trouble")});
        for (int i = 0; i < 30; ++i)
            take();
        take().cancel();
        QVERIFY(taken.size() == 1); // never from inside
        QTRY_COMPARE(taken.size(), 31);
        QCOMPARE(QSet<QString>(taken.begin(), taken.end()).size(), 31);
        QCOMPARE(lines_.join(", "), "ids, ids");
    }

private:
    void start(const std::shared_ptr<TimeSource>& time) {
        const QByteArray path = QFile::encodeName(folder_->filePath(QStringLiteral("a.txt")));
        run_ = std::make_unique<UploadRun>(service_, time, *SourceFile::open(path), settings_);
        run_->start(this, [this](const Result<UploadRun::Outcome>& outcome) { outcome_ = outcome; });
    }

    // There and back, so that whatever was on its way has arrived.
    void callThere() {
        bool isBack = false;
        service_->executeQuery(GTLQueryDrive::queryForFilesGetWithFileId(QStringLiteral("x")), this,
                               [&isBack](const auto&, const auto&, const auto&) { isBack = true; });
        QTRY_VERIFY(isBack);
    }

    static QList<Answer> answers(const QByteArray& names) {
        QList<Answer> list;
        for (const QByteArray& name : names.split(' ')) {
            if (name == "ok" || name.isEmpty())
                list.append(Answer());
            else if (name == "none")
                list.append(json(200, "{\"error\": {\"code\": -32601, \"message\": \"Method not found\"}}"));
            else if (name == "gone")
                list.append(json(200, "{\"error\": {\"code\": 404, \"message\": \"File not found\"}}"));
            else if (name == "hold")
                list.append(Answer::with(308, {}, {{"Range", "bytes=0-2"}}));
            else if (name == "reset")
                list.append(Answer::nothing(Answer::Then::reset));
            else if (name == "garbage")
                list.append(json(200, "{\"result\": {\"id\""));
            else if (name == "same")
                list.append(result(fileJSON(content, QStringLiteral("ID1"))));
            else if (name == "other")
                list.append(result(fileJSON("another", QStringLiteral("ID1"))));
            else if (name == "longer")
                list.append(result(fileJSON("contents", QStringLiteral("ID1"))));
            else
                list.append(refusal(name.toInt(), name == "403" ? "storageQuotaExceeded" : "other", "errors"));
        }
        return list;
    }

    static Answer next(QList<Answer>& list, const Answer& usual) {
        const Answer answer = list.isEmpty() ? Answer() : list.takeFirst();
        return answer.bytes.isEmpty() && answer.then == Answer::Then::keepOpen ? usual : answer;
    }

    Answer answer(const ReceivedRequest& request) {
        const QJsonObject call = QJsonDocument::fromJson(request.body).object();
        const QJsonObject parameters = call[QLatin1String("params")].toObject();
        if (request.method == "PUT")
            return answerPut(request);
        if (request.target.startsWith("/upload")) {
            isRpc_ = call.contains(QLatin1String("jsonrpc"));
            const QJsonObject file = isRpc_ ? parameters[QLatin1String("resource")].toObject() : call;
            return announce(file[QLatin1String("id")].toString());
        }
        if (call[QLatin1String("method")].toString() != QLatin1String("drive.files.generateIds")) {
            lines_.append("look");
            return next(looks_, result(fileJSON(content, QStringLiteral("x"))));
        }
        lines_.append("ids");
        QByteArrayList identifiers;
        for (int i = 0; i < parameters[QLatin1String("maxResults")].toInt(); ++i)
            identifiers.append("\"ID" + QByteArray::number(++givenOut_) + '"');
        const Answer given = result("{\"kind\": \"drive#generatedIds\", \"ids\": [" + identifiers.join(',') + "]}");
        return isAboutIdentifiers() ? next(announcements_, given) : given;
    }

    bool isAboutIdentifiers() const {
        return !announcements_.isEmpty() && (announcements_.first().bytes.contains("-32601") ||
                                             announcements_.first().bytes.startsWith("HTTP/1.1 500"));
    }

    Answer announce(const QString& identifier) {
        lines_.append(identifier.isEmpty() ? QByteArray("announce") : QByteArray("announce " + identifier.toUtf8()));
        if (kept_.identifier != identifier && identifier != QLatin1String("MINE"))
            lines_.append("before the identifier was kept");
        if (!kept_.location.isEmpty())
            lines_.append("while another location is kept");
        const QByteArray location = "/s/" + QByteArray::number(++sessions_);
        return next(announcements_, Answer::with(200, {}, {{"Location", location}}));
    }

    Answer answerPut(const ReceivedRequest& request) {
        const QByteArray range = request.header("Content-Range");
        lines_.append(request.target + ' ' + range.mid(6, range.indexOf('/') - 6));
        if (kept_.location.path().toUtf8() != request.target)
            lines_.append("before the location was kept");
        const QByteArray stored = fileJSON(content, kept_.identifier);
        return next(puts_, isRpc_ ? result(stored) : json(200, stored));
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<ScriptedServer> server_;
    std::shared_ptr<HastyTimeSource> hasty_;
    std::shared_ptr<GTLServiceDrive> service_;
    UploadRun::Settings settings_;
    std::unique_ptr<UploadRun> run_;
    std::optional<Result<UploadRun::Outcome>> outcome_;
    UploadSession kept_; // what a later run would find
    int sessions_ = 0;
    bool isRpc_ = true; // the road of the last announcement
    int givenOut_ = 0;  // identifiers
    QList<Answer> announcements_;
    QList<Answer> puts_;
    QList<Answer> looks_;
    QByteArrayList lines_; // what the Drive was asked
};

QTEST_GUILESS_MAIN(UploadSessionTest)
#include "tst_uploadsession.moc"
