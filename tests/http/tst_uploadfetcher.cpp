// The resumable upload protocol against a scripted server on the loopback.
#include "tests/http/UploadTest.h"

Q_DECLARE_METATYPE(quenby::testing::Answer)

using namespace Qt::StringLiterals;

namespace quenby {

using namespace testing;

class UploadFetcherTest : public testing::UploadTest {
    Q_OBJECT

private Q_SLOTS:
    void init() { reset(); }

    void bodyGoesUpInChunks_data() {
        QTest::addColumn<int>("length");
        QTest::addColumn<quint64>("chunkSize");
        QTest::addColumn<QByteArrayList>("ranges");
        QTest::addColumn<bool>("fromFile");
        for (const bool fromFile : {false, true}) {
            const char* from = fromFile ? "file" : "memory";
            QTest::addRow("two chunks, %s", from)
                << 1'000'000 << quint64(500'000)
                << QByteArrayList{"bytes 0-499999/1000000", "bytes 500000-999999/1000000"} << fromFile;
            QTest::addRow("no chunking, %s", from)
                << 1'500'000 << noChunking << QByteArrayList{"bytes 0-1499999/1500000"} << fromFile;
            QTest::addRow("empty, %s", from) << 0 << noChunking << QByteArrayList{"bytes */0"} << fromFile;
        }
    }

    void bodyGoesUpInChunks() {
        QFETCH(int, length);
        QFETCH(quint64, chunkSize);
        QFETCH(QByteArrayList, ranges);
        QFETCH(bool, fromFile);
        const QByteArray bytes = pattern(length);
        QList<Answer> script{announced()};
        for (qsizetype chunk = 1; chunk < ranges.size(); ++chunk)
            script.append(holding(static_cast<qint64>(chunkSize) * chunk));
        UploadServer server(script << created());
        if (fromFile)
            use(GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), file(bytes), "x/y", chunkSize,
                                                               {}));
        else
            upload(server, bytes, chunkSize);
        qint64 lastSent = 0;
        fetcher_->setSentDataBlock([&](qint64, qint64 sent, qint64 expected) {
            QCOMPARE(expected, length + 7);
            QVERIFY(sent > lastSent);
            lastSent = sent;
        });
        QVERIFY2(finish(), qPrintable(failure()));
        QVERIFY2(!error_, qPrintable(failure()));
        QCOMPARE(data_, "{\"id\":\"f1\"}");
        QCOMPARE(fetcher_->downloadedData(), data_);
        QCOMPARE(fetcher_->statusCode(), 200);
        QCOMPARE(fetcher_->responseHeaders().value("Content-Type"), "application/json");
        QCOMPARE(lastSent, length + 7);
        QCOMPARE(locations_, QStringList({u"/s/S3CRET"_s, QString()}));
        QVERIFY(!fetcher_->isFetching());

        const auto& first = server.requests().front();
        QCOMPARE(first.header("x-upload-content-length"), QByteArray::number(length));
        QCOMPARE(first.header("x-upload-content-type"), "x/y");
        QCOMPARE(first.body, "{\"m\":1}");
        QByteArray received;
        QByteArrayList seen;
        for (size_t index = 1; index < server.requests().size(); ++index) {
            const ReceivedRequest& request = server.requests()[index];
            QCOMPARE(request.method, "PUT");
            QCOMPARE(request.target, session.toLatin1());
            QCOMPARE(request.header("content-type"), "x/y");
            QCOMPARE(request.header("user-agent"), "tester");
            QCOMPARE(request.header("content-length"), QByteArray::number(request.body.size()));
            QVERIFY(!request.headers.contains("Transfer-Encoding"));
            seen.append(request.header("content-range"));
            received += request.body;
        }
        QCOMPARE(seen, ranges);
        QVERIFY(received == bytes);
    }

    void announcementMustBeAnsweredByTheProtocol_data() {
        QTest::addColumn<Answer>("step");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("a body") << Answer::with(200, "text", {{"Location", "/x"}}) << 501 << QByteArray("text");
        QTest::newRow("no location") << Answer::with(200) << 501 << QByteArray();
        QTest::newRow("empty location") << announced("") << 501 << QByteArray();
        QTest::newRow("refused") << Answer::with(403, "why") << 403 << QByteArray("why");
        QTest::newRow("connection lost") << lost() << int(URLErrorCode::networkConnectionLost) << QByteArray();
    }

    void announcementMustBeAnsweredByTheProtocol() {
        QFETCH(Answer, step);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        UploadServer server({step});
        upload(server, pattern(10), noChunking);
        QVERIFY2(finish(), qPrintable(failure()));
        QCOMPARE(error_->code(), status);
        QCOMPARE(error_->domain(), status > 0 ? errorDomain::httpStatus : errorDomain::url);
        QCOMPARE(error_->detail(errorKey::data).toByteArray(), body);
        QCOMPARE(data_, body);
        QCOMPARE(server.lines().size(), 1);
        QVERIFY(fetcher_->locationURL().isEmpty() && locations_.isEmpty());
    }

    // What follows a 308 to the first of the chunks of 3000 bytes.
    void serverDecidesWhereToGoOn_data() {
        QTest::addColumn<QByteArray>("range");
        QTest::addColumn<QByteArray>("next"); // empty: an error
        QTest::newRow("as sent") << QByteArray("bytes=0-2999") << QByteArray("PUT bytes 3000-5999/10000");
        QTest::newRow("less") << QByteArray("bytes=0-1023") << QByteArray("PUT bytes 1024-4023/10000");
        QTest::newRow("more") << QByteArray("bytes=0-7999") << QByteArray("PUT bytes 8000-9999/10000");
        QTest::newRow("missing") << QByteArray() << QByteArray("PUT bytes 0-2999/10000");
        QTest::newRow("malformed") << QByteArray("bytes=0-x") << QByteArray("PUT bytes 0-2999/10000");
        QTest::newRow("everything") << QByteArray("bytes=0-9999") << QByteArray("PUT bytes */10000");
        QTest::newRow("too far") << QByteArray("bytes=0-10000") << QByteArray();
        QTest::newRow("overflow") << QByteArray("bytes=0-18446744073709551615") << QByteArray();
    }

    void serverDecidesWhereToGoOn() {
        QFETCH(QByteArray, range);
        QFETCH(QByteArray, next);
        UploadServer server({announced(), incomplete(range), created()});
        upload(server, pattern(10'000), 3000);
        QVERIFY2(finish(), qPrintable(failure()));
        QCOMPARE(server.lines().value(2), next);
        QCOMPARE(error_.has_value(), next.isEmpty());
        if (error_)
            QVERIFY2(error_->is(FetcherErrorCode::chunkUploadFailed), qPrintable(failure()));
    }

    void serverThatNeverMovesEndsInOneError() {
        UploadServer server({announced()});
        server.setHandler([](const ReceivedRequest&) { return holding(3000); });
        upload(server, pattern(10'000), 3000);
        QVERIFY2(finish(), qPrintable(failure()));
        QVERIFY2(error_->is(FetcherErrorCode::chunkUploadFailed), qPrintable(failure()));
        QCOMPARE(server.lines().size(), 2 + UploadPlan::maximumFruitlessAnswers);
    }

    void locationMayChangeOnTheWay_data() {
        QTest::addColumn<QByteArray>("location");
        QTest::addColumn<QByteArray>("target"); // empty: an error
        QTest::newRow("relative") << QByteArray("other?S3CRET") << QByteArray("/s/other?S3CRET");
        QTest::newRow("absolute path") << QByteArray("/S3CRET") << QByteArray("/S3CRET");
        QTest::newRow("scheme not allowed") << QByteArray("http://example.invalid/S3CRET") << QByteArray();
        QTest::newRow("no web address") << QByteArray("file:///S3CRET") << QByteArray();
    }

    void locationMayChangeOnTheWay() {
        QFETCH(QByteArray, location);
        QFETCH(QByteArray, target);
        UploadServer server({announced(), incomplete("bytes=0-2999", location), created()});
        upload(server, pattern(10'000), 3000);
        QVERIFY2(finish(), qPrintable(failure()));
        QCOMPARE(error_.has_value(), target.isEmpty());
        if (error_)
            QVERIFY2(error_->is(FetcherErrorCode::chunkUploadFailed), qPrintable(failure()));
        else
            QCOMPARE(server.requests().at(2).target, target);
        QCOMPARE(fetcher_->locationURL(), QUrl()); // done, or of no use
    }

    void failedChunkAsksTheServerFirst_data() {
        QTest::addColumn<QList<Answer>>("script");
        QTest::addColumn<QByteArrayList>("lines");
        const QByteArray chunk = "PUT bytes 0-99999/100000";
        const QByteArray query = "PUT bytes */100000";
        const QByteArray rest = "PUT bytes 40000-99999/100000";
        QTest::newRow("server error") << QList<Answer>{announced(), Answer::with(503), holding(40'000), created()}
                                      << QByteArrayList{"POST", chunk, query, rest};
        QTest::newRow("connection lost") << QList<Answer>{announced(), lost(), holding(40'000), created()}
                                         << QByteArrayList{"POST", chunk, query, rest};
        QTest::newRow("final reply lost")
            << QList<Answer>{announced(), lost(), created()} << QByteArrayList{"POST", chunk, query};
        QTest::newRow("query fails too") << QList<Answer>{announced(), Answer::with(503), Answer::with(503),
                                                          incomplete({}), created()}
                                         << QByteArrayList{"POST", chunk, query, query, chunk};
        QTest::newRow("announcement fails first")
            << QList<Answer>{Answer::with(503), announced(), created()} << QByteArrayList{"POST", "POST", chunk};
    }

    void failedChunkAsksTheServerFirst() {
        QFETCH(QList<Answer>, script);
        QFETCH(QByteArrayList, lines);
        UploadServer server(script);
        GTMHTTPUploadFetcher& fetcher = upload(server, pattern(100'000), noChunking);
        fetcher.setRetryEnabled(true);
        fetcher.setMinRetryInterval(0.001);
        int asked = 0;
        fetcher.setRetryBlock([&asked](bool suggested, const Error& error) {
            ++asked;
            return suggested && !error.isHTTPStatus(308);
        });
        QVERIFY2(finish(), qPrintable(failure()));
        QVERIFY2(!error_, qPrintable(failure()));
        QCOMPARE(server.lines(), lines);
        QVERIFY(asked > 0);
        for (const auto& request : server.requests()) {
            if (UploadServer::lineOf(request).contains('*'))
                QCOMPARE(request.header("content-length"), "0");
        }
        if (server.requests().back().body.size() == 60'000)
            QVERIFY(server.requests().back().body == pattern(100'000).sliced(40'000));
    }

    void withoutRetryTheLocationIsKept_data() {
        QTest::addColumn<Answer>("step");
        QTest::addColumn<int>("code");
        QTest::newRow("status") << Answer::with(500, "oops") << 500;
        QTest::newRow("connection") << lost() << int(URLErrorCode::networkConnectionLost);
    }

    void withoutRetryTheLocationIsKept() {
        QFETCH(Answer, step);
        QFETCH(int, code);
        UploadServer server({announced(), step});
        upload(server, pattern(1000), noChunking);
        QVERIFY2(finish(), qPrintable(failure()));
        QVERIFY2(error_->is(errorDomain::httpStatus, code), qPrintable(failure()));
        QCOMPARE(fetcher_->locationURL(), server.url(session));
        QCOMPARE(server.lines().size(), 2);
    }

    void expiredTokenInAChunkIsRefreshed() {
        UploadServer server({announced(), Answer::with(401), holding(40), created()});
        upload(server, pattern(100), noChunking).setAuthorizer(refreshingAuthorizer());
        QVERIFY2(finish(), qPrintable(failure()));
        QVERIFY2(!error_, qPrintable(failure()));
        QCOMPARE(server.lines(),
                 QByteArrayList({"POST", "PUT bytes 0-99/100", "PUT bytes */100", "PUT bytes 40-99/100"}));
        QByteArrayList tokens;
        for (const auto& request : server.requests())
            tokens.append(request.header("authorization"));
        QCOMPARE(tokens, QByteArrayList({"Bearer token0", "Bearer token0", "Bearer token1", "Bearer token1"}));
    }

    void tokenStaysWithItsOrigin() {
        UploadServer elsewhere({created()});
        UploadServer server({announced(elsewhere.url(session).toEncoded())});
        upload(server, pattern(100), noChunking).setAuthorizer(refreshingAuthorizer());
        QVERIFY2(finish(), qPrintable(failure()));
        QVERIFY2(!error_, qPrintable(failure()));
        QVERIFY(server.requests().front().headers.contains("authorization"));
        QVERIFY(!elsewhere.requests().front().headers.contains("authorization"));
    }
};

} // namespace quenby

QTEST_GUILESS_MAIN(quenby::UploadFetcherTest)
#include "tst_uploadfetcher.moc"
