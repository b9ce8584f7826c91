// What the service sends, byte for byte, and what it makes of replies.
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceRequest.h"
#include "tests/driveapi/ServiceFixture.h"
#include "tests/support/FakeAuthorizer.h"

using namespace quenby;
using namespace quenby::testing;

namespace {

using Configure = std::function<void(GTLServiceDrive&, GTLQueryDrive&)>;

QByteArray headersOf(const URLRequest& request) {
    QByteArrayList lines;
    for (const auto& [name, value] : request.headers)
        lines.append(name + ": " + value);
    std::sort(lines.begin(), lines.end());
    return lines.join('\n');
}

} // namespace

Q_DECLARE_METATYPE(Configure)

class TestService : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sendsCalls_data() {
        QTest::addColumn<Configure>("configure");
        QTest::addColumn<QByteArray>("url");
        QTest::addColumn<QByteArray>("headers");
        QTest::addColumn<QByteArray>("body");

        const QByteArray url = "https://www.googleapis.com/rpc?prettyPrint=false";
        const QByteArray headers =
            "Accept: application/json-rpc\nAuthorization: Bearer token0\nCache-Control: no-cache\n"
            "Content-Type: application/json-rpc; charset=utf-8\nUser-Agent: agent "
            "quenby-drive-client";
        const QByteArray start = R"({"jsonrpc":"2.0","method":"drive.files.get","id":"gtl_7")";
        const QByteArray body = start + R"(,"apiVersion":"v2","params":{"fileId":"F"}})";
        const auto row = [](const char* name, Configure configure, const QByteArray& expectedURL,
                            const QByteArray& expectedHeaders, const QByteArray& expectedBody) {
            QTest::newRow(name) << std::move(configure) << expectedURL << expectedHeaders << expectedBody;
        };

        row(
            "plain", [](auto&, auto&) {}, url, headers, body);
        row(
            "no API version, no parameters",
            [](auto& service, auto& query) {
                service.settings().apiVersion.clear();
                query.setFileId(QString());
            },
            url, headers, start + "}");
        row(
            "body object",
            [](auto&, auto& query) {
                const auto file = GTLDriveFile::object();
                file->setTitle(text("ü\n"));
                query.setBodyObject(file);
            },
            url, headers,
            start + ",\"apiVersion\":\"v2\",\"params\":{\"fileId\":\"F\",\"resource\":{\"title\":\"ü\\n\"}}}");
        row(
            "API key", [](auto& service, auto&) { service.ticketSettings().APIKey = text("K"); }, url, headers,
            start + R"(,"apiVersion":"v2","params":{"fileId":"F","key":"K"}})");
        row(
            "the query's own API key",
            [](auto& service, auto& query) {
                service.ticketSettings().APIKey = text("K");
                query.setCustomParameter(text("own"), text("key"));
            },
            url, headers, start + R"(,"apiVersion":"v2","params":{"fileId":"F","key":"own"}})");
        row(
            "address parameters of query and service",
            [](auto& service, auto& query) {
                service.settings().urlQueryParameters = {{text("s"), text("1 2")}};
                query.setUrlQueryParameters({{text("q"), text("&")}});
            },
            url + "&q=%26&s=1+2", headers, body);
        row(
            "headers: the query's over the service's over the rest",
            [](auto& service, auto& query) {
                service.settings().additionalHTTPHeaders = {{text("Cache-Control"), text("service")},
                                                            {text("X-Both"), text("service")}};
                query.setAdditionalHTTPHeaders({{text("X-Both"), text("query")}});
            },
            url, QByteArray(headers).replace("no-cache", "service") + "\nX-Both: query", body);
        row(
            "without authorization", [](auto&, auto& query) { query.setShouldSkipAuthorization(true); }, url,
            QByteArray(headers).replace("Authorization: Bearer token0\n", ""), body);
    }
    void sendsCalls() {
        QFETCH(Configure, configure);
        ServiceFixture fixture;
        fixture.service.setAuthorizer(std::make_shared<FakeAuthorizer>());
        fixture.service.setExactUserAgent(text("agent quenby-drive-client"));
        const auto query = numbered(GTLQueryDrive::queryForFilesGetWithFileId(text("F")), "gtl_7");
        configure(fixture.service, *query);
        fixture.run(query);

        QCOMPARE(fixture.network.requests.size(), 1u);
        const auto& [request, body] = fixture.network.requests.front();
        QCOMPARE(request.httpMethod, "POST");
        QTEST(request.url.toEncoded(), "url");
        QTEST(headersOf(request), "headers");
        QTEST(body, "body");
        QCOMPARE(request.timeout, std::chrono::milliseconds(60000));
        QVERIFY(request.reloadIgnoringLocalCache);
    }

    void addsETags_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("ETag");
        QTest::addColumn<QByteArray>("header");

        const QByteArray strong = "\"tag\"", weak = "W/\"tag\"";
        QTest::newRow("no method") << QByteArray() << strong << QByteArray("If-None-Match");
        QTest::newRow("GET") << QByteArray("GET") << strong << QByteArray("If-None-Match");
        QTest::newRow("GET, weak") << QByteArray("GET") << weak << QByteArray("If-None-Match");
        for (const char* method : {"PUT", "PATCH", "DELETE"}) {
            QTest::addRow("%s", method) << QByteArray(method) << strong << QByteArray("If-Match");
            QTest::addRow("%s, weak", method) << QByteArray(method) << weak << QByteArray();
        }
        QTest::newRow("POST") << QByteArray("POST") << strong << QByteArray();
        QTest::newRow("none") << QByteArray("PUT") << QByteArray() << QByteArray();
    }
    void addsETags() {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, ETag);
        QFETCH(QByteArray, header);
        const URLRequest request = requestForURL({}, QUrl(text("https://host/")), method, ETag);
        for (const QByteArray name : {"If-None-Match", "If-Match"})
            QCOMPARE(request.headers.value(name), name == header ? ETag : QByteArray());
    }

    void sendsCallsByName() {
        ServiceFixture fixture;
        fixture.network.handler = [](const URLRequest&) { return resultReply(R"({"id":"F"})"); };
        Outcome outcome;
        const auto fetch = [&](const char* methodName) {
            return fixture.service.fetchObjectWithMethodNamed(
                text(methodName), JSONDictionary::make({{"fileId", text("F")}}), GTLDriveFile::object(),
                &GTLDriveFile::classDescriptor(), &fixture.context, outcome.handler());
        };
        QVERIFY(!fetch(""));
        QVERIFY(fetch("drive.files.copy"));
        fixture.settleAll();
        QVERIFY(outcome.as<GTLDriveFile>());
        QVERIFY(fixture.network.requests.at(0).body.contains(R"("params":{"fileId":"F","resource":{}})"));
    }

    void sendsREST_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("ETagHeader");

        const QByteArray json = "{\"etag\":\"\\\"t\\\"\",\"title\":\"a\"}";
        QTest::newRow("fetch") << QByteArray("GET") << QByteArray() << QByteArray();
        QTest::newRow("insert") << QByteArray("POST") << json << QByteArray();
        QTest::newRow("update") << QByteArray("PUT") << json << QByteArray("If-Match");
        QTest::newRow("delete") << QByteArray("DELETE") << QByteArray() << QByteArray("If-Match");
    }
    void sendsREST() {
        QFETCH(QByteArray, method);
        ServiceFixture fixture;
        GTLServiceDrive& service = fixture.service;
        service.ticketSettings().APIKey = text("K");
        const QUrl url(text("https://host/files/1"));
        const auto file = GTLDriveFile::object();
        file->setETag(text("\"t\""));
        file->setTitle(text("a"));
        const GTLClass* const fileClass = &GTLDriveFile::classDescriptor();
        if (method == "GET")
            service.fetchObjectWithURL(url, fileClass, &fixture.context, nullptr);
        else if (method == "POST")
            service.fetchObjectByInsertingObject(file, url, fileClass, &fixture.context, nullptr);
        else if (method == "PUT")
            service.fetchObjectByUpdatingObject(file, url, fileClass, &fixture.context, nullptr);
        else
            service.deleteResourceURL(url, "\"t\"", &fixture.context, nullptr);
        settle();

        const auto& [request, body] = fixture.network.requests.at(0);
        QCOMPARE(request.httpMethod, method);
        QCOMPARE(request.url.toEncoded(), "https://host/files/1?key=K");
        QCOMPARE(request.headers.value("Accept"), "application/json");
        QCOMPARE(request.headers.value("Content-Type"), "application/json; charset=utf-8");
        QTEST(body, "body");
        QFETCH(QByteArray, ETagHeader);
        QCOMPARE(request.headers.value("If-Match"), ETagHeader.isEmpty() ? QByteArray() : QByteArray("\"t\""));
    }

    void readsReplies_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("domain"); // empty: success
        QTest::addColumn<qint64>("code");
        QTest::addColumn<QString>("inDescription");

        const QByteArray json = "application/json-rpc";
        const QString none;
        const auto unusable = static_cast<qint64>(GTLServiceErrorCode::replyUnusable);
        const auto malformed = static_cast<qint64>(JSONErrorCode::malformed);
        const auto row = [](const char* name, int status, const QByteArray& type, const QByteArray& body,
                            const QString& domain = {}, qint64 code = 0, const QString& inDescription = {}) {
            QTest::newRow(name) << status << type << body << domain << code << inDescription;
        };
        row("result", 200, json, "{\"id\":\"x\",\"result\":{\"kind\":\"drive#file\",\"id\":\"F\"}}");
        row("result without kind", 200, json, R"({"id":"x","result":{"id":"F"}})");
        row("result, no type named", 200, "", R"({"id":"x","result":{"id":"F"}})");
        row("empty result", 200, json, R"({"id":"x","result":{}})");

        row("error in a good reply", 200, json, R"({"id":"x","error":{"code":403,"message":"Denied"}})",
            errorDomain::jsonRPC, 403, text("Denied"));
        row("JSON error with 404", 404, "application/json; charset=UTF-8",
            R"({"id":"x","error":{"code":404,"message":"File not found: F"}})", errorDomain::jsonRPC, 404,
            text("File not found: F"));
        row("JSON without an error in it", 500, "application/json", R"({"oops":true})", errorDomain::httpStatus, 500);
        row("broken JSON error", 500, "application/json", R"({"error":)", errorDomain::json, malformed);
        row("text error", 502, "text/plain", "upstream is away; access_token=abc123", errorDomain::httpStatus, 502,
            text("upstream is away; access_token=_snip_"));
        row("bare error", 500, "text/plain", "", errorDomain::httpStatus, 500);

        row("truncated", 200, json, "{\"id\":\"x\",\"result\":{\"kind\":\"drive#fi", errorDomain::json, malformed,
            text("try again"));
        row("not JSON", 200, json, "<html>", errorDomain::json, malformed, text("try again"));
        row("another type", 200, "text/html", "<html>log in here</html>", errorDomain::service, unusable,
            text("text/html"));
        row("empty", 200, json, "", errorDomain::service, unusable, text("empty reply"));
        row("neither result nor error", 200, json, R"({"id":"x"})", errorDomain::service, unusable);
        row("an array for one call", 200, json, R"([{"id":"x","result":{}}])", errorDomain::service, unusable);
        row("a bare value", 200, json, "7", errorDomain::service, unusable);
    }
    void readsReplies() {
        QFETCH(int, status);
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, body);
        QFETCH(QString, domain);
        ServiceFixture fixture;
        fixture.network.handler = [&](const URLRequest&) { return FakeReply{status, body, type}; };
        const Outcome outcome = fixture.run(GTLQueryDrive::queryForFilesGetWithFileId(text("F")));
        QCOMPARE(outcome.calls, 1);
        QCOMPARE(outcome.ticket->statusCode(), status);
        if (domain.isEmpty()) {
            QVERIFY(!outcome.error);
            QVERIFY(outcome.as<GTLDriveFile>());
            return;
        }
        QFETCH(qint64, code);
        QFETCH(QString, inDescription);
        QVERIFY(outcome.error && !outcome.object);
        QVERIFY2(outcome.error->is(domain, code), qPrintable(outcome.error->description()));
        QVERIFY2(outcome.error->description().contains(inDescription), qPrintable(outcome.error->description()));
        if (domain == errorDomain::jsonRPC && status == 404) {
            QCOMPARE(GTLErrorObject::underlyingObjectForError(*outcome.error)->code(), 404);
            QCOMPARE(outcome.error->detail(gtlHTTPStatusKey).toInt(), 404);
        }
    }

    void readsRESTReplies() {
        ServiceFixture fixture;
        fixture.network.handler = [](const URLRequest& request) {
            return request.httpMethod == "DELETE" ? FakeReply{.status = 204}
                                                  : FakeReply{.body = R"({"title":"outer","data":{"title":"inner"}})"};
        };
        const QUrl url(text("https://host/x"));
        const auto fetchedTitle = [&](bool isWrapped) {
            fixture.service.settings().isRESTDataWrapperRequired = isWrapped;
            Outcome outcome;
            fixture.service.fetchObjectWithURL(url, &GTLDriveFile::classDescriptor(), &fixture.context,
                                               outcome.handler());
            fixture.settleAll();
            return outcome.as<GTLDriveFile>() ? outcome.as<GTLDriveFile>()->title() : QString();
        };
        QCOMPARE(fetchedTitle(false), text("outer"));
        QCOMPARE(fetchedTitle(true), text("inner"));

        Outcome deleted;
        fixture.service.deleteResourceURL(url, {}, &fixture.context, deleted.handler());
        fixture.settleAll();
        QCOMPARE(deleted.calls, 1);
        QVERIFY(!deleted.error && !deleted.object);
    }

    void downloads() {
        ServiceFixture fixture;
        const auto file = GTLDriveFile::object();
        QVERIFY(!fixture.service.downloadFetcherForFile(*file, text("/tmp/x")));
        file->setIdentifier(text("a/b"));
        const auto byIdentifier = fixture.service.downloadFetcherForFile(*file, text("/tmp/x"));
        QCOMPARE(byIdentifier->request().url.toEncoded(), "https://www.googleapis.com/drive/v2/files/a%2Fb?alt=media");
        QCOMPARE(byIdentifier->downloadPath(), text("/tmp/x"));
        file->setDownloadUrl(text("https://host/content?e=1%2F2"));
        QCOMPARE(fixture.service.downloadFetcherForFile(*file, text("/tmp/x"))->request().url.toEncoded(),
                 "https://host/content?e=1%2F2");
    }
};

QTEST_GUILESS_MAIN(TestService)
#include "tst_service.moc"
