// Queries with media: where the media come from, what is announced, progress, locations, pausing and resuming.
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "tests/driveapi/ServiceFixture.h"

#include <QTemporaryDir>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QByteArray location = "https://www.googleapis.com/upload/session?upload_id=S";

// Answers the announcement with the location, a question with nothing received, and the body with the new file.
FakeReply uploadServer(const URLRequest& request) {
    if (request.httpMethod == "POST")
        return FakeReply{.location = location};
    if (request.headers.value("Content-Range").startsWith("bytes */"))
        return FakeReply{.status = 308};
    return resultReply(R"({"kind":"drive#file","id":"new"})");
}

std::shared_ptr<GTLQueryDrive> insertion(const GTLUploadParameters& parameters) {
    const auto file = GTLDriveFile::object();
    file->setTitle(text("T"));
    return GTLQueryDrive::queryForFilesInsertWithObject(file, parameters);
}

} // namespace

class TestServiceUploads : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        dir_ = std::make_unique<QTemporaryDir>();
        QFile file(path("media"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(media_), media_.size());
    }

    void announcesAndSends_data() {
        QTest::addColumn<QString>("source");
        for (const char* source : {"data", "fileHandle", "fileURL"})
            QTest::newRow(source) << text(source);
    }
    void announcesAndSends() {
        QFETCH(QString, source);
        GTLUploadParameters parameters = GTLUploadParameters::uploadParametersWithData(media_, "text/plain");
        if (source == text("fileHandle")) {
            const auto file = std::make_shared<QFile>(path("media"));
            QVERIFY(file->open(QIODevice::ReadOnly));
            parameters = GTLUploadParameters::uploadParametersWithFileHandle(file, "text/plain");
        } else if (source == text("fileURL")) {
            parameters =
                GTLUploadParameters::uploadParametersWithFileURL(QUrl::fromLocalFile(path("media")), "text/plain");
        }
        parameters.slug = text("é%.txt");
        const auto query = insertion(parameters);
        query->setRequestID(text("gtl_1"));
        ServiceFixture fixture;
        fixture.network.handler = uploadServer;
        const Outcome outcome = fixture.run(query);

        QVERIFY2(!outcome.error, outcome.error ? qPrintable(outcome.error->description()) : "");
        QCOMPARE(outcome.as<GTLDriveFile>()->identifier(), text("new"));
        QCOMPARE(fixture.network.requests.size(), 2u);
        const auto& [announcement, body] = fixture.network.requests[0];
        QCOMPARE(announcement.url.toEncoded(),
                 "https://www.googleapis.com/upload/rpc?uploadType=resumable&prettyPrint=false");
        QCOMPARE(body, QByteArray(R"({"jsonrpc":"2.0","method":"drive.files.insert","id":"gtl_1","apiVersion":"v2",)"
                                  R"("params":{"resource":{"title":"T"}}})"));
        QCOMPARE(announcement.headers.value("Slug"), "%C3%A9%25.txt");
        QCOMPARE(announcement.headers.value("X-Upload-Content-Type"), "text/plain");
        QCOMPARE(announcement.headers.value("X-Upload-Content-Length"), "120000");
        QCOMPARE(fixture.network.requests[1].body, media_);
        QCOMPARE(fixture.network.requests[1].request.url.toEncoded(), location);
    }

    void failsWithoutReadableMedia_data() {
        QTest::addColumn<std::shared_ptr<GTLQueryDrive>>("query");
        QTest::addColumn<QString>("inDescription");

        const QUrl missing = QUrl::fromLocalFile(text("/nonexistent/file"));
        auto resumed = GTLUploadParameters::uploadParametersWithData("x", "text/plain");
        resumed.uploadLocationURL = QUrl::fromEncoded(location);
        QTest::newRow("missing file") << insertion(
                                             GTLUploadParameters::uploadParametersWithFileURL(missing, "text/plain"))
                                      << text("/nonexistent/file");
        QTest::newRow("no file handle") << insertion(GTLUploadParameters::uploadParametersWithFileHandle(nullptr,
                                                                                                         "text/plain"))
                                        << text("not open for reading");
        QTest::newRow("closed file handle") << insertion(GTLUploadParameters::uploadParametersWithFileHandle(
                                                   std::make_shared<QFile>(text("/etc/hostname")), "text/plain"))
                                            << text("not open for reading");
        QTest::newRow("bytes at a location") << insertion(resumed) << text("begin this one again");
    }
    void failsWithoutReadableMedia() {
        QFETCH(std::shared_ptr<GTLQueryDrive>, query);
        QFETCH(QString, inDescription);
        ServiceFixture fixture;
        Outcome outcome;
        QVERIFY(!fixture.service.executeQuery(query, &fixture.context, outcome.handler()));
        QCOMPARE(outcome.calls, 0);
        fixture.settleAll();
        QCOMPARE(outcome.calls, 1);
        QVERIFY(outcome.error);
        QVERIFY2(outcome.error->description().contains(inDescription), qPrintable(outcome.error->description()));
        QVERIFY(fixture.network.requests.empty());
    }

    void sendsTheMediaAlone() {
        auto parameters = GTLUploadParameters::uploadParametersWithData(media_, "text/plain");
        parameters.shouldSendUploadOnly = true;
        ServiceFixture fixture;
        fixture.network.handler = uploadServer;
        QVERIFY(!fixture.run(insertion(parameters)).error);
        QVERIFY(fixture.network.requests[0].body.isEmpty());
        QCOMPARE(fixture.network.requests[0].request.httpMethod, "POST");
    }

    void cutsNoChunkBelowTheMinimum() {
        ServiceFixture fixture;
        fixture.service.settings().serviceUploadChunkSize = 1;
        fixture.network.handler = [](const URLRequest& request) {
            return request.httpMethod == "POST" ? uploadServer(request) : FakeReply{.status = 403};
        };
        fixture.service.executeQuery(insertion(GTLUploadParameters::uploadParametersWithData(media_, "text/plain")));
        settle();
        QCOMPARE(fixture.network.requests.at(1).body.size(), 50000);
    }

    void resumesAtALocation() {
        auto parameters =
            GTLUploadParameters::uploadParametersWithFileURL(QUrl::fromLocalFile(path("media")), "text/plain");
        parameters.uploadLocationURL = QUrl::fromEncoded(location);
        ServiceFixture fixture;
        fixture.service.setExactUserAgent(text("quenby-drive-client test"));
        fixture.network.handler = uploadServer;
        const Outcome outcome = fixture.run(insertion(parameters));
        QVERIFY2(!outcome.error, outcome.error ? qPrintable(outcome.error->description()) : "");
        QCOMPARE(fixture.network.requests.size(), 2u);
        for (const auto& [request, body] : fixture.network.requests) {
            QCOMPARE(request.url.toEncoded(), location);
            QCOMPARE(request.headers.value("User-Agent"), "quenby-drive-client test");
        }
        QCOMPARE(fixture.network.requests[0].request.headers.value("Content-Range"), "bytes */120000");
        QCOMPARE(fixture.network.requests[1].body, media_);
    }

    void tellsProgressAndLocations() {
        ServiceFixture fixture;
        fixture.network.handler = uploadServer;
        QList<QUrl> locations;
        std::vector<std::pair<qint64, qint64>> progress;
        fixture.service.ticketSettings().uploadLocationChangeBlock = [&](const auto&, const QUrl& given) {
            locations.append(given);
        };
        const auto ticket = fixture.service.executeQuery(
            insertion(GTLUploadParameters::uploadParametersWithData(media_, "text/plain")));
        ticket->setUploadProgressBlock([&](const GTLServiceTicketPtr& given, qint64 sent, qint64 total) {
            QCOMPARE(given, ticket);
            progress.emplace_back(sent, total);
        });
        fixture.settleAll();
        QVERIFY(ticket->hasCalledCallback());
        QVERIFY(progress.size() >= 2);
        QVERIFY(std::is_sorted(progress.begin(), progress.end()));
        QCOMPARE(progress.back().first, progress.back().second);
        QVERIFY(progress.back().second > media_.size()); // the announcement counts
        QCOMPARE(locations.first(), QUrl::fromEncoded(location));
        QVERIFY(locations.last().isEmpty()); // used up
    }

    void pausesAndResumes() {
        ServiceFixture fixture;
        fixture.network.handler = uploadServer;
        fixture.network.isHolding = true;
        Outcome outcome;
        const auto ticket =
            fixture.service.executeQuery(insertion(GTLUploadParameters::uploadParametersWithData(media_, "text/plain")),
                                         &fixture.context, outcome.handler());
        fixture.network.answerWaiting();
        settle();
        QCOMPARE(fixture.network.waitingCount(), 1u);
        ticket->pauseUpload();
        QVERIFY(ticket->isUploadPaused());
        QCOMPARE(fixture.network.waitingCount(), 0u);
        ticket->resumeUpload();
        QVERIFY(!ticket->isUploadPaused());
        fixture.network.isHolding = false;
        QCOMPARE(fixture.network.waitingCount(), 1u);
        fixture.network.answerWaiting();
        fixture.settleAll();
        QCOMPARE(outcome.calls, 1);
        QVERIFY(!outcome.error);

        const auto plain = fixture.service.executeQuery(GTLQueryDrive::queryForAboutGet());
        plain->pauseUpload();
        QVERIFY(!plain->isUploadPaused());
    }

    void readsErrorsOfTheAnnouncement() {
        ServiceFixture fixture;
        fixture.network.handler = [](const URLRequest&) {
            return FakeReply{403, R"({"id":"x","error":{"code":403,"message":"The quota is used up"}})"};
        };
        const Outcome outcome =
            fixture.run(insertion(GTLUploadParameters::uploadParametersWithData(media_, "text/plain")));
        QCOMPARE(outcome.calls, 1);
        QVERIFY2(outcome.error && outcome.error->is(errorDomain::jsonRPC, 403),
                 outcome.error ? qPrintable(outcome.error->description()) : "");
        QCOMPARE(fixture.network.requests.size(), 1u);
    }

private:
    QString path(const char* name) const { return dir_->filePath(text(name)); }

    std::unique_ptr<QTemporaryDir> dir_;
    const QByteArray media_ = QByteArray(120000, 'm');
};

QTEST_GUILESS_MAIN(TestServiceUploads)
#include "tst_serviceuploads.moc"
