// The second road: what is sent for a query, how answers are read, and how a service that has
// lost the first road goes over.
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLResourceKeys.h"
#include "driveapi/rest/LostRoad.h"
#include "tests/driveapi/ServiceFixture.h"

#include <QTemporaryFile>

using namespace quenby;
using namespace quenby::testing;

namespace {

using Query = GTLQueryDrive::Query;
const QByteArray base = "https://www.googleapis.com/drive/v2";
const QByteArray location = "https://www.googleapis.com/upload/session?upload_id=S";

GTLUploadParameters someMedia(qsizetype bytes = 10) {
    return GTLUploadParameters::uploadParametersWithData(QByteArray(bytes, 'm'), "text/plain");
}

struct RestFixture : ServiceFixture {
    RestFixture() { service.settings().road = APIRoad::rest; }
    const FakeNetwork::Request& sent(size_t index = 0) const { return network.requests.at(index); }
};

bool isOnFirstRoad(const URLRequest& request) { return request.url.path().endsWith(text("/rpc")); }

} // namespace

class TestRestCalls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sendsParametersAndBodies_data() {
        QTest::addColumn<Query>("query");
        QTest::addColumn<QByteArray>("verb");
        QTest::addColumn<QByteArray>("target"); // below the base
        QTest::addColumn<QByteArray>("body");

        const auto changes = GTLQueryDrive::queryForChangesList();
        changes->setIncludeDeleted(false);
        changes->setStartChangeId(9007199254740993);
        changes->setFields(text("items(id,file/title)"));
        changes->setCustomParameter(JSONArray::make({text("a b"), 2}), text("many"));
        QTest::newRow("query") << changes << QByteArray("GET")
                               << QByteArray("/changes?prettyPrint=false&includeDeleted=false"
                                             "&startChangeId=9007199254740993&fields=items%28id%2Cfile%2Ftitle%29"
                                             "&many=a%20b&many=2&key=K")
                               << QByteArray();

        const auto file = GTLDriveFile::object();
        file->setTitle(text("é"));
        file->setETag(text("\"tag\""));
        const auto update = GTLQueryDrive::queryForFilesUpdateWithObject(file, text("a/b ?#%+ü"));
        update->setPinned(true);
        update->setCustomParameter(text("own"), text("key"));
        QTest::newRow("path, body and the query's own key")
            << update << QByteArray("PUT")
            << QByteArray("/files/a%2Fb%20%3F%23%25%2B%C3%BC?prettyPrint=false&pinned=true&key=own")
            << QByteArray("{\"title\":\"é\",\"etag\":\"\\\"tag\\\"\"}");

        QTest::newRow("no body") << GTLQueryDrive::queryForFilesTouchWithFileId(text("F")) << QByteArray("POST")
                                 << QByteArray("/files/F/touch?prettyPrint=false&key=K") << QByteArray();
    }
    void sendsParametersAndBodies() {
        QFETCH(Query, query);
        QFETCH(QByteArray, target);
        RestFixture fixture;
        fixture.service.ticketSettings().APIKey = text("K");
        fixture.network.handler = [](const URLRequest&) { return FakeReply{.body = R"({"id":"F"})"}; };
        fixture.run(query);
        const auto& [request, body] = fixture.sent();
        QTEST(request.httpMethod, "verb");
        QCOMPARE(request.url.toEncoded(), base + target);
        QTEST(body, "body");
        // A body's tag guards nothing on the first road, and here neither.
        QVERIFY(!request.headers.contains("If-Match") && !request.headers.contains("If-None-Match"));
        QCOMPARE(request.headers.value("Accept"), "application/json");
        QCOMPARE(request.headers.contains("Content-Type"), !body.isEmpty());
    }

    void refusesWhatCannotBeAsked_data() {
        QTest::addColumn<Query>("query");
        QTest::addColumn<qint64>("code");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, const Query& query, qint64 code, const char* reason) {
            QTest::newRow(name) << query << code << text(reason);
        };
        const auto trashed = GTLQueryDrive::queryForFilesTrashWithFileId(text("F"));
        trashed->setUploadParameters(someMedia());
        row("unknown method", GTLQueryDrive::queryWithMethodName(text("drive.files.fold")), -32601, "methodNotFound");
        row("missing", GTLQueryDrive::queryWithMethodName(text("drive.files.get")), 400, "required");
        row("empty", GTLQueryDrive::queryForCommentsGetWithFileId(text("F"), QString()), 400, "required");
        row("dots", GTLQueryDrive::queryForPropertiesDeleteWithFileId(text("F"), text("..")), 400, "invalid");
        row("the trash", GTLQueryDrive::queryForFilesDeleteWithFileId(text("trash")), 400, "invalid");
        row("media where none are taken", trashed, 400, "invalid");
    }
    void refusesWhatCannotBeAsked() {
        QFETCH(Query, query);
        QFETCH(qint64, code);
        RestFixture fixture;
        const Outcome outcome = fixture.run(query);
        QVERIFY(fixture.network.requests.empty());
        QCOMPARE(outcome.calls, 1);
        QVERIFY2(outcome.error && outcome.error->is(errorDomain::jsonRPC, code),
                 outcome.error ? qPrintable(outcome.error->description()) : "");
        QTEST(GTLErrorObject::underlyingObjectForError(*outcome.error)->data()->at(0)->reason(), "reason");
    }

    void readsErrorsAsOnTheFirstRoad() {
        RestFixture fixture;
        fixture.network.handler = [](const URLRequest&) {
            return FakeReply{403, R"({"error":{"errors":[{"domain":"usageLimits","reason":"quotaExceeded",)"
                                  R"("message":"Full"}],"code":403,"message":"Full"}})"};
        };
        const Outcome outcome = fixture.run(GTLQueryDrive::queryForFilesGetWithFileId(text("F")));
        QVERIFY(outcome.error && outcome.error->is(errorDomain::jsonRPC, 403));
        const auto error = GTLErrorObject::underlyingObjectForError(*outcome.error);
        QCOMPARE(error->message(), text("Full"));
        QCOMPARE(error->data()->at(0)->reason(), text("quotaExceeded"));
        QCOMPARE(outcome.error->detail(gtlHTTPStatusKey).toInt(), 403);

        fixture.network.handler = [](const URLRequest&) { return FakeReply{404, "gone", "text/plain"}; };
        QVERIFY(fixture.run(GTLQueryDrive::queryForAboutGet()).error->isHTTPStatus(404)); // there is no third road
        QCOMPARE(fixture.network.requests.size(), 2u);
        fixture.network.handler = [](const URLRequest&) { return FakeReply{.status = 204}; };
        const Outcome deleted = fixture.run(GTLQueryDrive::queryForFilesDeleteWithFileId(text("F")));
        QVERIFY(deleted.calls == 1 && !deleted.error && !deleted.object);
    }

    void followsPages() {
        RestFixture fixture;
        fixture.service.ticketSettings().shouldFetchNextPages = true;
        fixture.network.handler = [](const URLRequest& request) {
            return request.url.query().contains(text("pageToken=t%2F2"))
                       ? FakeReply{.body = R"({"items":[{"id":"8"}],"newStartPageToken":"9"})"}
                       : FakeReply{.body = R"({"items":[{"id":"7"}],"nextPageToken":"t/2"})"};
        };
        const auto query = GTLQueryDrive::queryForChangesList();
        query->setPageToken(text("1"));
        const auto list = fixture.run(query).as<GTLDriveChangeList>();
        QCOMPARE(list->items()->count(), 2);
        QCOMPARE(list->items()->at(1)->identifier(), 8); // a number that arrived as a text
        QCOMPARE(list->newStartPageToken(), text("9"));
        QCOMPARE(list->largestChangeId(), 0);
    }

    void sendsMedia() {
        RestFixture fixture;
        fixture.service.settings().serviceUploadChunkSize = 600000;
        QByteArrayList ranges;
        fixture.network.handler = [&](const URLRequest& request) {
            const QByteArray range = request.headers.value("Content-Range");
            if (range.isEmpty())
                return FakeReply{.location = location};
            ranges.append(range);
            return FakeReply{.body = R"({"id":"new"})"};
        };
        const auto file = GTLDriveFile::object();
        file->setTitle(text("T"));
        const auto query = GTLQueryDrive::queryForFilesUpdateWithObject(file, text("F"), someMedia(600000));
        query->setNewRevision(true);
        const Outcome outcome = fixture.run(query);
        const auto& [announcement, body] = fixture.sent();
        QCOMPARE(announcement.httpMethod, "PUT");
        QCOMPARE(announcement.url.toEncoded(), "https://www.googleapis.com/upload/drive/v2/files/F"
                                               "?uploadType=resumable&prettyPrint=false&newRevision=true");
        QCOMPARE(body, "{\"title\":\"T\"}");
        QCOMPARE(ranges.first(), "bytes 0-524287/600000"); // as much as two units
        QCOMPARE(outcome.as<GTLDriveFile>()->identifier(), text("new"));
    }

    void cutsChunksOfWholeUnits() {
        GTLServiceSettings settings;
        const auto used = [&](APIRoad road, quint64 wanted) {
            settings.road = road;
            settings.serviceUploadChunkSize = wanted;
            return settings.usedUploadChunkSize();
        };
        QCOMPARE(used(APIRoad::rest, 1), 262144u);
        QCOMPARE(used(APIRoad::rest, 262144), 262144u);
        QCOMPARE(used(APIRoad::rest, 8000000), 30u * 262144);
        QVERIFY(used(APIRoad::rest, defaultServiceUploadChunkSize) > quint64(1) << 60);
        QCOMPARE(used(APIRoad::rpc, 1), minimumServiceUploadChunkSize);
        QCOMPARE(used(APIRoad::rpc, 300000), 300000u);
    }

    void resumesUploadsOfEitherRoad_data() {
        QTest::addColumn<APIRoad>("road");
        QTest::addColumn<QByteArray>("reply");
        for (const auto& [name, road] : {std::pair("rpc", APIRoad::rpc), std::pair("rest", APIRoad::rest)}) {
            QTest::addRow("%s, resource", name) << road << QByteArray(R"({"id":"new"})");
            QTest::addRow("%s, envelope", name) << road << QByteArray(R"({"id":"gtl_1","result":{"id":"new"}})");
        }
    }
    void resumesUploadsOfEitherRoad() {
        QFETCH(APIRoad, road);
        QFETCH(QByteArray, reply);
        QTemporaryFile media;
        QVERIFY(media.open() && media.write("media") == 5 && media.flush());
        auto parameters =
            GTLUploadParameters::uploadParametersWithFileURL(QUrl::fromLocalFile(media.fileName()), "text/plain");
        parameters.uploadLocationURL = QUrl::fromEncoded(location);
        ServiceFixture fixture;
        fixture.service.settings().road = road;
        fixture.network.handler = [&](const URLRequest&) { return FakeReply{.body = reply}; };
        const Outcome outcome =
            fixture.run(GTLQueryDrive::queryForFilesInsertWithObject(GTLDriveFile::object(), parameters));
        QVERIFY2(!outcome.error, outcome.error ? qPrintable(outcome.error->description()) : "");
        QCOMPARE(outcome.as<GTLDriveFile>()->identifier(), text("new"));

        // A session that is not found is no lost road.
        fixture.network.handler = [](const URLRequest&) { return FakeReply{404, "no", "text/plain"}; };
        QVERIFY(fixture.run(GTLQueryDrive::queryForFilesInsertWithObject(GTLDriveFile::object(), parameters)).error);
        QCOMPARE(fixture.service.settings().road, road);
    }

    void tellsLostRoadsFromFailedCalls() {
        for (const int status : {404, 410, 501}) {
            for (const char* lost : {"", "<html>", "[]", R"({"error":{"code":404,"message":"Not Found"}})"})
                QVERIFY(saysRoadIsLost(status, lost));
            for (const char* open : {R"({"id":"gtl_1","error":{"code":404}})", R"({"jsonrpc":"2.0","error":{}})"})
                QVERIFY(!saysRoadIsLost(status, open));
        }
        for (const int status : {200, 400, 403, 500, 503})
            QVERIFY(!saysRoadIsLost(status, ""));
    }

    void goesOver_data() {
        QTest::addColumn<Query>("query");
        QTest::newRow("call") << GTLQueryDrive::queryForFilesGetWithFileId(text("F"));
        QTest::newRow("upload") << GTLQueryDrive::queryForFilesInsertWithObject(GTLDriveFile::object(), someMedia());
    }
    void goesOver() {
        QFETCH(Query, query);
        ServiceFixture fixture;
        fixture.service.ticketSettings().retryEnabled = true;
        fixture.service.ticketSettings().retryBlock = [](const auto&...) { return qFatal("asked"), true; };
        int changes = 0;
        connect(&fixture.service, &GTLService::roadChanged, &fixture.context, [&] {
            ++changes;
            QCOMPARE(fixture.service.settings().road, APIRoad::rest);
        });
        fixture.network.handler = [](const URLRequest& request) {
            if (isOnFirstRoad(request))
                return FakeReply{410, "gone", "text/plain"};
            const bool announces = request.url.path().startsWith(text("/upload/drive"));
            return announces ? FakeReply{.location = location} : FakeReply{.body = R"({"id":"F"})"};
        };
        fixture.network.isHolding = true;
        Outcome first, underWay;
        const auto ticket = fixture.service.executeQuery(query->copy(), &fixture.context, first.handler());
        ticket->pauseUpload(); // of an upload that is not announced yet
        fixture.service.executeQuery(query->copy(), &fixture.context, underWay.handler());
        fixture.network.release();
        fixture.settleAll();
        QCOMPARE(first.calls, query->uploadParameters() ? 0 : 1);
        ticket->resumeUpload();
        fixture.settleAll();
        for (const Outcome& outcome : {first, underWay}) {
            QCOMPARE(outcome.calls, 1);
            QVERIFY2(!outcome.error, outcome.error ? qPrintable(outcome.error->description()) : "");
            QCOMPARE(outcome.as<GTLDriveFile>()->identifier(), text("F"));
        }
        QCOMPARE(first.ticket, ticket);
        QCOMPARE(changes, 1);
        const qsizetype before =
            fixture.network.requestsTo(text("/rpc")) + fixture.network.requestsTo(text("/upload/rpc"));
        QCOMPARE(before, 2);
        fixture.run(GTLQueryDrive::queryForAboutGet());
        QCOMPARE(fixture.network.requestsTo(text("/rpc")) + fixture.network.requestsTo(text("/upload/rpc")), before);
    }

    void goesOverBetweenPages() {
        ServiceFixture fixture;
        fixture.service.ticketSettings().shouldFetchNextPages = true;
        fixture.network.handler = [&](const URLRequest& request) {
            if (!isOnFirstRoad(request))
                return FakeReply{.body = R"({"items":[{"id":"2"}]})"};
            return fixture.network.requests.size() == 1 ? resultReply(R"({"items":[{"id":"1"}],"nextPageToken":"p"})")
                                                        : FakeReply{.status = 404};
        };
        const auto list = fixture.run(GTLQueryDrive::queryForFilesList()).as<GTLDriveFileList>();
        QCOMPARE(list->items()->count(), 2);
        QCOMPARE(fixture.network.requests.back().request.url.toEncoded(),
                 base + "/files?prettyPrint=false&pageToken=p");
    }

    void staysWhereThereIsNoOtherRoad() {
        ServiceFixture fixture;
        fixture.service.settings().restURL = QUrl();
        fixture.network.handler = [](const URLRequest&) { return FakeReply{.status = 404}; };
        QVERIFY(fixture.run(GTLQueryDrive::queryForAboutGet()).error->isHTTPStatus(404));
        QCOMPARE(fixture.service.settings().road, APIRoad::rpc);
    }

    void sendsResourceKeys() {
        ServiceFixture fixture;
        const auto file = GTLDriveFile::object();
        file->setIdentifier(text("F"));
        const auto header = [&] {
            return fixture.service.downloadFetcherForFile(*file, text("/tmp/x"))
                ->request()
                .headers.value(gtlResourceKeysHeader);
        };
        QVERIFY(header().isNull());
        file->setResourceKey(text("0-k"));
        QCOMPARE(header(), "F/0-k");
        const auto query = GTLQueryDrive::queryForFilesGetWithFileId(text("F"));
        addResourceKeys(*query, {{text("F"), text("0-k")}, {text("G"), QString()}, {text("H"), text("1")}});
        fixture.run(query);
        QCOMPARE(fixture.network.requests.at(0).request.headers.value(gtlResourceKeysHeader), "F/0-k,H/1");
    }
};

QTEST_GUILESS_MAIN(TestRestCalls)
#include "tst_restcalls.moc"
