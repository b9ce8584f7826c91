// Following pages, and batches: what is sent for them, how results are merged, and what each member is told.
#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLBatchResult.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLQueryDrive.h"
#include "tests/driveapi/ServiceFixture.h"

using namespace quenby;
using namespace quenby::testing;

namespace {

QByteArray pageOfChanges(int first, int count, const QByteArray& nextPageToken) {
    const auto list = GTLDriveChangeList::object();
    list->setKind(text("drive#changeList"));
    list->setItems(GTLArray<GTLDriveChange>::make());
    for (int i = first; i < first + count; ++i) {
        const auto change = GTLDriveChange::object();
        change->setIdentifier(i);
        list->items()->append(change);
    }
    if (!nextPageToken.isEmpty())
        list->setNextPageToken(QString::fromLatin1(nextPageToken));
    return GTLJSONParser::dataWithObject(list->JSON());
}

} // namespace

class TestServicePages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void followsPages_data() {
        QTest::addColumn<bool>("follow");
        QTest::addColumn<int>("pagesOnServer");
        QTest::addColumn<int>("pagesFetched");

        QTest::newRow("off") << false << 3 << 1;
        QTest::newRow("one page") << true << 1 << 1;
        QTest::newRow("all pages") << true << 3 << 3;
        QTest::newRow("exactly the limit") << true << 27 << 27;
        QTest::newRow("beyond the limit") << true << 40 << 27;
    }
    void followsPages() {
        QFETCH(bool, follow);
        QFETCH(int, pagesOnServer);
        QFETCH(int, pagesFetched);
        constexpr int perPage = 50;
        ServiceFixture fixture;
        fixture.service.ticketSettings().shouldFetchNextPages = follow;
        QByteArrayList tokens;
        fixture.network.handler = [&](const URLRequest& request) {
            const auto call = GTLJSONParser::objectWithData(request.body)->dictionary();
            const JSONDictionaryPtr parameters = call->value("params").dictionary();
            tokens.append(parameters ? parameters->utf8Value("pageToken") : QByteArray());
            const int page = tokens.last().mid(1).toInt();
            return resultReply(pageOfChanges(
                page * perPage, perPage, page + 1 < pagesOnServer ? 'p' + QByteArray::number(page + 1) : QByteArray()));
        };
        const auto query = numbered(GTLQueryDrive::queryForChangesList(), "gtl_9");
        const Outcome outcome = fixture.run(query);

        QCOMPARE(outcome.calls, 1);
        QCOMPARE(tokens.size(), pagesFetched);
        const auto list = outcome.as<GTLDriveChangeList>();
        QVERIFY(list);
        QCOMPARE(list->items()->count(), pagesFetched * perPage);
        for (qsizetype i = 0; i < list->items()->count(); ++i)
            QCOMPARE(list->items()->at(i)->identifier(), i);
        QCOMPARE(list->nextPageToken().isEmpty(), pagesFetched == pagesOnServer);
        QVERIFY(query->pageToken().isEmpty()); // the caller's own query is as it was
        for (const auto& [request, body] : fixture.network.requests)
            QVERIFY(body.contains(R"("id":"gtl_9")"));
        QCOMPARE(outcome.ticket->objectFetcher()->comment(),
                 pagesFetched == 1 ? text("drive.changes.list")
                                   : text("drive.changes.list (page %1)").arg(pagesFetched));
    }

    void followsBatchPages() {
        ServiceFixture fixture;
        fixture.service.ticketSettings().shouldFetchNextPages = true;
        fixture.network.handler = [&](const URLRequest&) {
            if (fixture.network.requests.size() == 1) {
                return FakeReply{.body = R"([{"id":"b","result":)" + pageOfChanges(0, 2, "more") +
                                         R"(},{"id":"a","result":{"kind":"drive#file","id":"F"}},)"
                                         R"({"id":"c","error":{"code":404,"message":"gone"}}])"};
            }
            return FakeReply{.body = R"([{"id":"b","result":)" + pageOfChanges(2, 2, {}) + "}]"};
        };
        const Outcome outcome = fixture.run(GTLBatchQuery::batchQueryWithQueries({
            numbered(GTLQueryDrive::queryForFilesGetWithFileId(text("F")), "a"),
            numbered(GTLQueryDrive::queryForChangesList(), "b"),
            numbered(GTLQueryDrive::queryForFilesGetWithFileId(text("G")), "c"),
        }));

        QCOMPARE(fixture.network.requests.size(), 2u);
        QVERIFY(fixture.network.requests[1].body.contains(R"("pageToken":"more")"));
        QVERIFY(!fixture.network.requests[1].body.contains("drive.files.get"));
        const auto result = outcome.as<GTLBatchResult>();
        QVERIFY(result);
        QCOMPARE(result->successes().size(), 2u);
        QCOMPARE(result->failures().count(text("c")), 1u);
        const auto list = std::dynamic_pointer_cast<GTLDriveChangeList>(result->successes().at(text("b")));
        QCOMPARE(list->items()->count(), 4);
        QCOMPARE(list->items()->at(3)->identifier(), 3);
    }

    void sendsBatches() {
        ServiceFixture fixture;
        const auto batch = GTLBatchQuery::batchQueryWithQueries({
            numbered(GTLQueryDrive::queryForAboutGet(), "gtl_1"),
            numbered(GTLQueryDrive::queryForFilesGetWithFileId(text("F")), "gtl_2"),
        });
        batch->setUrlQueryParameters({{text("trace"), text("1")}});
        fixture.run(batch);
        const auto& [request, body] = fixture.network.requests.at(0);
        QCOMPARE(request.url.toEncoded(), "https://www.googleapis.com/rpc?prettyPrint=false&trace=1");
        QCOMPARE(body, QByteArray(R"([{"jsonrpc":"2.0","method":"drive.about.get","id":"gtl_1","apiVersion":"v2"},)"
                                  R"({"jsonrpc":"2.0","method":"drive.files.get","id":"gtl_2","apiVersion":"v2",)"
                                  R"("params":{"fileId":"F"}}])"));
    }

    void answersBatchMembers() {
        ServiceFixture fixture;
        fixture.network.handler = [](const URLRequest&) {
            return FakeReply{.body =
                                 R"([{"id":"2","error":{"code":403,"message":"no"}},{"id":"1","result":{"id":"F"}},)"
                                 R"({"id":"3","result":null}])"};
        };
        Outcome members[4];
        const auto batch = GTLBatchQuery::batchQuery();
        for (int i = 0; i < 4; ++i) {
            const auto query = GTLQueryDrive::queryForFilesGetWithFileId(text("F"));
            query->setRequestID(QString::number(i + 1));
            query->setCompletionBlock(members[i].handler());
            if (i == 2)
                query->setExpectedObjectClass(nullptr);
            batch->addQuery(query);
        }
        const Outcome outcome = fixture.run(batch);

        QCOMPARE(outcome.calls, 1);
        QVERIFY(!outcome.error);
        for (const Outcome& member : members) {
            QCOMPARE(member.calls, 1);
            QCOMPARE(member.ticket, outcome.ticket);
        }
        QVERIFY(members[0].as<GTLDriveFile>());
        QVERIFY(members[1].error && members[1].error->is(errorDomain::jsonRPC, 403));
        QVERIFY(!members[2].error && !members[2].object);
        QVERIFY(members[3].error && members[3].error->is(errorDomain::service, -3000));
        QCOMPARE(outcome.ticket->queryForRequestID(text("2"))->requestID(), text("2"));
    }

    void failsBatchesAsAWhole() {
        for (const QByteArray body :
             {R"({"id":"1","error":{"code":400,"message":"no"}})", R"({"id":"1","result":{}})"}) {
            ServiceFixture fixture;
            fixture.network.handler = [&](const URLRequest&) { return FakeReply{.body = body}; };
            Outcome member;
            const auto query = GTLQueryDrive::queryForAboutGet();
            query->setCompletionBlock(member.handler());
            const Outcome outcome = fixture.run(GTLBatchQuery::batchQueryWithQueries({query}));
            QCOMPARE(outcome.calls, 1);
            QCOMPARE(member.calls, 1);
            QVERIFY(outcome.error && member.error && !member.object);
            QVERIFY(member.error->is(outcome.error->domain(), outcome.error->code()));
        }
    }

    void refusesQueries_data() {
        QTest::addColumn<std::shared_ptr<GTLQueryProtocol>>("query");

        const auto row = [](const char* name, const std::shared_ptr<GTLQueryProtocol>& query) {
            QTest::newRow(name) << query;
        };
        row("none", nullptr);
        row("empty batch", GTLBatchQuery::batchQuery());
        row("repeated request ID",
            GTLBatchQuery::batchQueryWithQueries(
                {numbered(GTLQueryDrive::queryForAboutGet(), "x"), numbered(GTLQueryDrive::queryForAboutGet(), "x")}));
        row("member without request ID",
            GTLBatchQuery::batchQueryWithQueries(
                {GTLQueryDrive::queryForAboutGet(), numbered(GTLQueryDrive::queryForAboutGet(), "")}));
    }
    void refusesQueries() {
        QFETCH(std::shared_ptr<GTLQueryProtocol>, query);
        ServiceFixture fixture;
        Outcome outcome;
        QVERIFY(!fixture.service.executeQuery(query, &fixture.context, outcome.handler()));
        fixture.settleAll();
        QCOMPARE(outcome.calls, 0);
        QVERIFY(fixture.network.requests.empty());
    }
};

QTEST_GUILESS_MAIN(TestServicePages)
#include "tst_servicepages.moc"
