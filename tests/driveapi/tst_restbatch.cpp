// Batches on the second road: what is sent, and answers in any order, of any form, and of any quality.
#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLBatchResult.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/rest/MultipartAnswer.h"
#include "tests/driveapi/ServiceFixture.h"
#include "tests/support/ScriptedServer.h"

using namespace quenby;
using namespace quenby::testing;

namespace {

QByteArray part(const QByteArray& contentID, const QByteArray& status, const QByteArray& body) {
    return "--b\r\nContent-Type: application/http\r\nContent-ID: <response-" + contentID + ">\r\n\r\nHTTP/1.1 " +
           status +
           "\r\nContent-Type: application/json; charset=UTF-8\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body + "\r\n";
}

FakeReply multipart(const QByteArray& parts) { return {200, parts + "--b--\r\n", "multipart/mixed; boundary=b"}; }

struct Member {
    QByteArray contentID;
    QByteArray message; // the HTTP request in it
};

// The parts of a batch that was sent.
std::vector<Member> membersOf(const FakeNetwork::Request& sent) {
    std::vector<Member> members;
    const auto parts = partsOfMultipart(sent.request.headers.value("Content-Type"), sent.body);
    for (const MultipartPart& sentPart : parts.valueOr({}))
        members.push_back({sentPart.headers.value("Content-ID").chopped(1).mid(1), sentPart.body});
    return members;
}

std::shared_ptr<GTLQueryDrive> fileQuery(const QString& requestID, Outcome& outcome,
                                         const QString& fileId = text("F")) {
    const auto query = GTLQueryDrive::queryForFilesGetWithFileId(fileId);
    query->setRequestID(requestID);
    query->setCompletionBlock(outcome.handler());
    return query;
}

} // namespace

class TestRestBatch : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sendsParts() {
        ServiceFixture fixture;
        fixture.service.settings().road = APIRoad::rest;
        fixture.service.ticketSettings().APIKey = text("K");
        const auto get = numbered(GTLQueryDrive::queryForFilesGetWithFileId(text("F")), "gtl_1");
        get->setAdditionalHTTPHeaders({{text("X-Mine"), text("1\r\nX-Evil: 2")}});
        const auto file = GTLDriveFile::object();
        file->setTitle(text("END_OF_PART"));
        const auto patch = numbered(GTLQueryDrive::queryForFilesPatchWithObject(file, text("G")), "a <b>");
        patch->setUrlQueryParameters({{text("trace"), text("1")}});
        fixture.run(GTLBatchQuery::batchQueryWithQueries({get, patch}));

        QCOMPARE(fixture.network.requests.size(), 1u);
        const auto& sent = fixture.network.requests.front();
        QCOMPARE(sent.request.httpMethod, "POST");
        QCOMPARE(sent.request.url.toEncoded(), "https://www.googleapis.com/batch/drive/v2");
        const auto members = membersOf(sent);
        QCOMPARE(members.size(), 2u);
        QCOMPARE(members[0].contentID, "gtl_1");
        QVERIFY(members[0].message.startsWith("GET /drive/v2/files/F?prettyPrint=false&key=K HTTP/1.1\r\n"));
        QVERIFY(members[0].message.contains("\r\nX-Mine: 1X-Evil: 2\r\n"));
        QCOMPARE(members[1].contentID, "a%20%3Cb%3E");
        QVERIFY(members[1].message.startsWith("PATCH /drive/v2/files/G?prettyPrint=false&key=K&trace=1 HTTP/1.1\r\n"));
        QVERIFY(members[1].message.endsWith("Content-Length: 23\r\n\r\n{\"title\":\"END_OF_PART\"}"));
    }

    // Over a real connection, with everything that an answer may have.
    void answersMembers() {
        ScriptedServer server;
        server.setHandler([](const ReceivedRequest& request) {
            if (request.target != "/batch")
                return Answer::with(404);
            const QByteArray body =
                "preamble\r\n" +
                part("3", "404 Not Found",
                     R"({"error":{"code":404,"message":"no","errors":[{"reason":"notFound"}]}})") +
                "--b\r\ncontent-id:\t<response-a%20b>\r\ncontent-type: application/http\r\n\r\n"
                "HTTP/1.1 200 OK\r\nfolded: a\r\n b\r\n\r\n{\"id\":\"F\"}\r\n" +
                "--b \t\r\nContent-ID: <response-4>\r\n\r\nHTTP/1.1 204 No Content\r\nContent-Length: 0\r\n\r\n\r\n" +
                part("unknown", "200 OK", "{}") + part("5", "502 Bad Gateway", "<html>away</html>") +
                part("6", "200 OK", "no json") + "--b--\r\nepilogue --b";
            return Answer::with(200, body, {{"Content-Type", "Multipart/Mixed; charset=x; Boundary=\"b\""}});
        });
        Endpoints endpoints;
        endpoints.rpcURL = server.url(text("/rpc"));
        endpoints.restURL = server.url(text("/v2"));
        endpoints.restBatchURL = server.url(text("/batch"));
        endpoints.isLocal = true;
        GTLServiceDrive service(endpoints); // begins on the road that is lost here
        Outcome found, missing, failed, deleted, away, broken, refused, all;
        const auto batch = GTLBatchQuery::batchQueryWithQueries(
            {fileQuery(text("a b"), found), fileQuery(text("2"), missing), fileQuery(text("3"), failed),
             fileQuery(text("4"), deleted), fileQuery(text("5"), away), fileQuery(text("6"), broken),
             fileQuery(text("7"), refused, QString())});
        batch->queries()[3]->setExpectedObjectClass(nullptr);
        QVERIFY(service.waitForTicket(service.executeQuery(batch, this, all.handler()), std::chrono::seconds(20)));

        QCOMPARE(service.settings().road, APIRoad::rest);
        QCOMPARE(found.as<GTLDriveFile>()->identifier(), text("F"));
        QVERIFY(missing.error->is(errorDomain::service, -3000));
        QVERIFY(failed.error->is(errorDomain::jsonRPC, 404));
        QCOMPARE(GTLErrorObject::underlyingObjectForError(*failed.error)->data()->at(0)->reason(), text("notFound"));
        QVERIFY(!deleted.error && !deleted.object);
        QVERIFY(away.error->is(errorDomain::jsonRPC, 502));
        QVERIFY(broken.error->is(errorDomain::jsonRPC, -3002));
        QVERIFY(refused.error->is(errorDomain::jsonRPC, 400));
        for (const Outcome& member : {found, missing, failed, deleted, away, broken, refused, all})
            QCOMPARE(member.calls, 1);
        QCOMPARE(server.requests().size(), 2u);
    }

    void refusesBadAnswers_data() {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("body");
        const QByteArray type = "multipart/mixed; boundary=b";
        const QByteArray good = part("1", "200 OK", R"({"id":"F"})");
        const auto row = [](const char* name, const QByteArray& given, const QByteArray& body) {
            QTest::newRow(name) << given << body;
        };
        row("empty", type, "");
        row("not multipart", "application/json", R"({"id":"F"})");
        row("no boundary", "multipart/mixed; charset=b", good + "--b--");
        row("empty boundary", "multipart/mixed; boundary=\"\"", "----\r\n");
        row("unended quotes", "multipart/mixed; boundary=\"b", good + "--b--");
        row("another boundary", "multipart/mixed; boundary=c", good + "--b--");
        row("truncated between parts", type, good);
        row("truncated in a part", type, good.chopped(4));
        row("truncated in a header", type, "--b\r\nContent-ID: <resp");
        row("malformed header", type, "--b\r\nnonsense\r\n\r\n\r\n--b--");
        row("no status line", type, "--b\r\nContent-ID: <response-1>\r\n\r\n{}\r\n--b--");
        row("bad status", type, "--b\r\nContent-ID: <response-1>\r\n\r\nHTTP/1.1 99 x\r\n\r\n{}\r\n--b--");
        row("length beyond the part", type,
            "--b\r\nContent-ID: <response-1>\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}\r\n--b--");
        row("length is no number", type,
            "--b\r\nContent-ID: <response-1>\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n{}\r\n--b--");
    }
    void refusesBadAnswers() {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, body);
        ServiceFixture fixture;
        fixture.service.settings().road = APIRoad::rest;
        fixture.network.handler = [&](const URLRequest&) { return FakeReply{200, body, type}; };
        Outcome member;
        const Outcome outcome = fixture.run(GTLBatchQuery::batchQueryWithQueries({fileQuery(text("1"), member)}));
        QVERIFY2(outcome.error && outcome.error->is(errorDomain::service, -3002),
                 outcome.error ? qPrintable(outcome.error->description()) : "");
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(member.calls, 1);
        QVERIFY(member.error && !member.object);
    }

    // 250 calls, each of which has a second page, in reversed order.
    void sendsLargeBatchesInParts() {
        ServiceFixture fixture;
        fixture.service.settings().road = APIRoad::rest;
        fixture.service.ticketSettings().shouldFetchNextPages = true;
        std::vector<size_t> sizes;
        fixture.network.handler = [&](const URLRequest&) {
            QByteArray parts;
            const auto members = membersOf(fixture.network.requests.back());
            sizes.push_back(members.size());
            for (const Member& member : members) {
                const bool isSecond = member.message.contains("pageToken=2");
                parts.prepend(
                    part(member.contentID, "200 OK",
                         isSecond ? R"({"items":[{"id":"b"}]})" : R"({"items":[{"id":"a"}],"nextPageToken":"2"})"));
            }
            return multipart(parts);
        };
        std::vector<Outcome> outcomes(250);
        const auto batch = GTLBatchQuery::batchQuery();
        for (Outcome& outcome : outcomes) {
            const auto query = GTLQueryDrive::queryForFilesList();
            query->setCompletionBlock(outcome.handler());
            batch->addQuery(query);
        }
        const Outcome all = fixture.run(batch);
        QCOMPARE(sizes, (std::vector<size_t>{100, 100, 50, 100, 100, 50}));
        QVERIFY(!all.error);
        QCOMPARE(all.as<GTLBatchResult>()->successes().size(), 250u);
        for (const Outcome& outcome : outcomes) {
            QCOMPARE(outcome.calls, 1);
            QVERIFY(!outcome.error);
            QCOMPARE(outcome.as<GTLDriveFileList>()->items()->count(), 2);
        }
    }

    // What was done before a later part failed is not called a failure.
    void keepsTheAnswersBeforeAFailure() {
        ServiceFixture fixture;
        fixture.service.settings().road = APIRoad::rest;
        fixture.network.handler = [&](const URLRequest&) {
            if (fixture.network.requests.size() == 2)
                return FakeReply{500, "", "text/plain"};
            QByteArray parts;
            for (const Member& member : membersOf(fixture.network.requests.back()))
                parts += part(member.contentID, "200 OK", R"({"id":"F"})");
            return multipart(parts);
        };
        std::vector<Outcome> outcomes(101);
        const auto batch = GTLBatchQuery::batchQuery();
        for (Outcome& outcome : outcomes)
            batch->addQuery(fileQuery(GTLQuery::nextRequestID(), outcome));
        const Outcome all = fixture.run(batch);
        QVERIFY(all.error && all.error->isHTTPStatus(500) && !all.object);
        QVERIFY(outcomes.front().object && !outcomes.front().error);
        QVERIFY(outcomes.back().error && outcomes.back().error->isHTTPStatus(500));
    }

    void sendsNothingForRefusedMembersAlone() {
        ServiceFixture fixture;
        fixture.service.settings().road = APIRoad::rest;
        Outcome member;
        const Outcome all =
            fixture.run(GTLBatchQuery::batchQueryWithQueries({fileQuery(text("1"), member, QString())}));
        QVERIFY(fixture.network.requests.empty());
        QVERIFY(all.calls == 1 && !all.error);
        QVERIFY(member.error->is(errorDomain::jsonRPC, 400));
    }
};

QTEST_GUILESS_MAIN(TestRestBatch)
#include "tst_restbatch.moc"
