// What the fetch log writes, where, and what it must never write.
#include "http/FetchLog.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace quenby {
namespace {

const QString processName = u"quenby"_s;
const QString dateStamp = u"6-07_01-02-03PM"_s;

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

FetchRecord recordOf(const char* url, int status, const char* responseType = nullptr, const QByteArray& body = {}) {
    FetchRecord record;
    record.comment = u"files.list <b>"_s;
    record.started = QDateTime(QDate(2026, 6, 7), QTime(13, 2, 3), Qt::UTC);
    record.request = URLRequest(QUrl(QString::fromLatin1(url)));
    record.originalURL = record.request.url;
    record.response = HTTPResponse{record.request.url, status, {}};
    if (responseType)
        record.response->headers.set("Content-Type", responseType);
    record.responseBody = body;
    record.responseLength = body.size();
    return record;
}

} // namespace

class FetchLogTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder_;

    QString directory() const { return folder_->filePath(u"deep/er"_s); }
    std::unique_ptr<FetchLog> makeLog() { return std::make_unique<FetchLog>(directory(), processName, dateStamp); }

    // Everything that a log of these records leaves on the disk, file names included.
    QByteArray everythingWritten(const FetchRecord& record) {
        auto log = makeLog();
        log->attemptDidEnd(record);
        log.reset();
        QByteArray all;
        QDirIterator files(directory(), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            all += path.toUtf8() + '\n' + contentsOf(path) + '\n';
        }
        return all;
    }

    // The page's or the text file's contents after one record.
    QByteArray pageOf(const FetchRecord& record) { return written(record, u"aperçu_http_log.html"_s); }
    QByteArray textOf(const FetchRecord& record) { return written(record, u"fetch_1.txt"_s); }
    QByteArray written(const FetchRecord& record, const QString& name) {
        auto log = makeLog();
        log->attemptDidEnd(record);
        log->flush();
        return contentsOf(QFileInfo(log->pagePath()).path() + '/'_L1 + name);
    }

private Q_SLOTS:
    void init() { folder_ = std::make_unique<QTemporaryDir>(); }

    void namesAndModes() {
        auto log = makeLog();
        QVERIFY2(!QFile::exists(directory()), "nothing is made before something is logged");
        log->attemptDidEnd(recordOf("https://h/1", 200));
        log->attemptDidEnd(recordOf("https://h/2", 200));
        log->flush();
        const QString run = directory() + u"/quenby_log_6-07_01-02-03PM"_s;
        QCOMPARE(log->pagePath(), QString(run + u"/aperçu_http_log.html"_s));
        QCOMPARE(QDir(run).entryList(QDir::Files | QDir::NoDotAndDotDot).size(), 3);
        QVERIFY(contentsOf(run + u"/fetch_2.txt"_s).contains("GET https://h/2"));
        QVERIFY(contentsOf(log->pagePath())
                    .startsWith("<html><head><meta http-equiv=\"content-type\" content=\"text/html; charset=UTF-8\">"
                                "<title>quenby HTTP fetch log 6-07_01-02-03PM</title>"));
        const auto mode = [](const QString& path) {
            struct stat facts = {};
            return ::stat(QFile::encodeName(path).constData(), &facts) == 0 ? facts.st_mode & 0777 : 0;
        };
        QCOMPARE(mode(directory()), 0700u);
        QCOMPARE(mode(run), 0700u);
        QCOMPARE(mode(log->pagePath()), 0600u);
        QCOMPARE(mode(run + u"/fetch_1.txt"_s), 0600u);

        auto second = makeLog(); // of the same second
        second->attemptDidEnd(recordOf("https://h/3", 200));
        second->flush();
        QCOMPARE(second->pagePath(), QString(run + u"_1/aperçu_http_log.html"_s));
        QCOMPARE(QFile::symLinkTarget(directory() + u"/quenby_log_newest.html"_s), second->pagePath());
        QCOMPARE(QDir(run + u"_1"_s).entryList(QDir::System | QDir::Files).size(), 2);
    }

    void dateStampIsLocalTwelveHourTime() {
        const auto stamp = [](int hour) {
            return FetchLog::loggingDateStamp(QDateTime(QDate(2026, 3, 5), QTime(hour, 4, 9), Qt::LocalTime));
        };
        QCOMPARE(stamp(15), u"3-05_03-04-09PM"_s);
        QCOMPARE(stamp(0), u"3-05_12-04-09AM"_s);
    }

    void pageShowsTheFetch() {
        FetchRecord record = recordOf("http://127.0.0.1:81/files?a=<x>&q=1", 404, "application/json",
                                      R"({"error":{"code":404,"message":"No <such> file"}})");
        record.originalURL = QUrl(u"https://first/"_s);
        record.request.httpMethod = "POST";
        for (const char* name : {"Authorization", "Cookie", "If-Match", "If-None-Match"})
            record.request.headers.set(name, "Bearer S3CRET");
        record.response->headers.set("Set-Cookie", "a=S3CRET; Path=/");
        record.response->headers.set("Location", "https://elsewhere/");
        record.error = Error(errorDomain::httpStatus, 404, {{errorKey::reason, u"not <there>"_s}});
        record.willRetry = true;
        const QByteArray page = pageOf(record);
        for (const char* part :
             {"files.list &lt;b&gt;", "request/response log", "href=\"fetch_1.txt\"", "redirected from https://first/",
              "request: POST", "a=%3Cx%3E&amp;q=1", "authorized, non-SSL", "&#9888;", "cookies", "if-match",
              "if-none-match", "4 headers", "response:", "404: No &lt;such&gt; file", "sets cookies", "redirects",
              "49 bytes", "Error: not &lt;there&gt;", "will be retried"})
            QVERIFY2(page.contains(part), part);
        QVERIFY(!page.contains("files.list <b>") && !page.contains("<such>") && !page.contains("<there>"));
        QVERIFY(!page.contains("S3CRET"));
    }

    void secureAuthorizedFetchHasNoWarning() {
        FetchRecord record = recordOf("https://h/", 200);
        record.request.headers.set("Authorization", "Bearer S3CRET");
        const QByteArray page = pageOf(record);
        QVERIFY(page.contains("authorized") && !page.contains("non-SSL") && !page.contains("&#9888;"));
    }

    void secretsNeverReachTheDisk_data() {
        QTest::addColumn<QByteArray>("requestType");
        QTest::addColumn<QByteArray>("requestBody");
        QTest::addColumn<QByteArray>("responseType");
        QTest::addColumn<QByteArray>("responseBody");
        const auto row = [](const char* name, const char* requestType, const char* requestBody,
                            const char* responseType, const char* responseBody) {
            QTest::newRow(name) << QByteArray(requestType) << QByteArray(requestBody) << QByteArray(responseType)
                                << QByteArray(responseBody);
        };
        row("token endpoint", "application/x-www-form-urlencoded", "client_secret=S3CRET&code=S3CRET&x=y",
            "application/json; charset=utf-8", R"({"access_token":"S3CRET","refresh_token":"S3CRET"})");
        row("nested json", "application/json", R"([{"params":{"token":"S3CRET"}}])", "application/json",
            R"({"a":[{"id_token":"S3CRET"}]})");
        row("wrong types", "text/plain", "refresh_token=S3CRET", "image/png", R"({"access_token":"S3CRET"})");
        row("page", "", "", "text/html", "<title>Success code=S3CRET</title>");
        row("xml", "application/xml", "<a><password>S3CRET</password></a>", "application/atom+xml",
            "<a link='https://h/?token=S3CRET'/>");
        QTest::newRow("binary") << QByteArray("application/octet-stream") << QByteArray("\0\1access_token=S3CRET\0", 23)
                                << QByteArray("application/octet-stream") << QByteArray("\0\"token\":\"S3CRET\"\0", 18);
        const QString wide = u"\uFEFFaccess_token=S3CRET"_s;
        QTest::newRow("utf-16") << QByteArray() << QByteArray() << QByteArray("text/plain")
                                << QByteArray(reinterpret_cast<const char*>(wide.utf16()), wide.size() * 2);
    }

    void secretsNeverReachTheDisk() {
        QFETCH(QByteArray, requestType);
        QFETCH(QByteArray, requestBody);
        QFETCH(QByteArray, responseType);
        QFETCH(QByteArray, responseBody);
        FetchRecord record = recordOf("https://u:S3CRET@h/p?access_token=S3CRET#code=S3CRET", 400,
                                      responseType.constData(), responseBody);
        record.comment = u"sign-in code=S3CRET"_s;
        record.originalURL = QUrl(u"https://h/?code=S3CRET"_s);
        record.request.body = requestBody;
        record.request.headers.set("Content-Type", requestType);
        record.request.headers.set("Authorization", "OAuth oauth_token=\"S3CRET\"");
        record.request.headers.set("Cookie", "SID=S3CRET");
        record.response->headers.set("Set-Cookie", "SID=S3CRET");
        record.error = Error(URLErrorCode::unknown, {{errorKey::reason, u"refused Bearer S3CRET-token"_s}});
        QByteArray all = everythingWritten(record);
        QVERIFY(all.contains("_snip_"));
        QVERIFY2(!all.contains("S3CRET") && !all.replace('\0', "").contains("S3CRET"), all);
    }

    // The location appears in the announcement's answer, in the chunks' addresses, and wherever a server quotes it.
    void uploadLocationsNeverReachTheDisk_data() {
        QTest::addColumn<bool>("isAnnouncement");
        QTest::addColumn<QByteArray>("location");
        for (const char* location :
             {"https://h/sessions/S3CRET", "https://h/u?id=S3CRET&n=1", "/S3CRET%2Fpart?S3CRET"}) {
            QTest::addRow("announced %s", location) << true << QByteArray(location);
            QTest::addRow("chunk to %s", location) << false << QByteArray(location);
        }
    }

    void uploadLocationsNeverReachTheDisk() {
        QFETCH(bool, isAnnouncement);
        QFETCH(QByteArray, location);
        FetchRecord record = recordOf("https://h/announce", isAnnouncement ? 200 : 308, "text/html",
                                      "<p>The address " + location + " moved</p>");
        if (isAnnouncement) {
            record.request.headers.set("X-Upload-Content-Length", "5");
        } else {
            record.isURLSecret = true;
            record.request.url = QUrl(u"https://h/"_s).resolved(QUrl::fromEncoded(location));
            record.originalURL = record.request.url;
            record.error = Error(URLErrorCode::timedOut, {{errorKey::reason, record.request.url.toString()}});
        }
        record.response->headers.set("Location", location);
        record.response->headers.set("Link", '<' + location + ">; rel=self");
        const QByteArray all = everythingWritten(record);
        QVERIFY2(!all.contains("S3CRET"), all);
        QVERIFY(isAnnouncement ? all.contains("https://h/announce") : all.contains("https://h/_snip_"));
    }

    void bodiesAreLaidOut_data() {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("inText"); // of the text file
        QTest::addColumn<QString>("file");      // beside the page; empty for none
        const QByteArray binary("\x89PNG\0\1\2", 7);
        QTest::newRow("json") << QByteArray("application/json") << QByteArray(R"({"title":"x"})")
                              << QByteArray("{\n    \"title\": \"x\"\n}") << QString();
        QTest::newRow("short json") << QByteArray("application/json") << QByteArray("[1,2]") << QByteArray("\n[1,2]\n")
                                    << QString();
        QTest::newRow("broken json") << QByteArray("application/json") << QByteArray(R"({"title":"x)")
                                     << QByteArray(R"({"title":"x)") << QString();
        QTest::newRow("blank json") << QByteArray("application/json") << QByteArray(10, ' ')
                                    << QByteArray("\nresponse: status 200\n") << QString();
        QTest::newRow("blank") << QByteArray("text/plain") << QByteArray(10, '\n')
                               << QByteArray("\nresponse: status 200\n") << QString();
        QTest::newRow("text") << QByteArray("text/plain; charset=utf-8") << QByteArray("gr\xc3\xbc\xc3\x9f\n")
                              << QByteArray("gr\xc3\xbc\xc3\x9f\n") << QString();
        QTest::newRow("latin-1 text") << QByteArray("text/plain") << QByteArray("gr\xfc\xdf")
                                      << QByteArray("gr\xc3\xbc\xc3\x9f") << QString();
        QTest::newRow("xml") << QByteArray("application/xml") << QByteArray("<a/>") << QByteArray("<a/>")
                             << u"fetch_1_response.xml"_s;
        QTest::newRow("atom") << QByteArray("application/atom+xml") << QByteArray("<a/>") << QByteArray("<a/>")
                              << u"fetch_1_response.xml"_s;
        for (const auto& [type, extension] : {std::pair("image/png", ".png"), std::pair("image/jpeg", ".jpg"),
                                              std::pair("image/gif", ".gif"), std::pair("application/zip", "")})
            QTest::newRow(type) << QByteArray(type) << binary << QByteArray("<7 bytes>")
                                << QString(u"fetch_1_response"_s + QLatin1String(extension));
    }

    void bodiesAreLaidOut() {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, inText);
        QFETCH(QString, file);
        const FetchRecord record = recordOf("https://h/", 200, type.constData(), body);
        auto log = makeLog();
        log->attemptDidEnd(record);
        log->flush();
        const QDir run = QFileInfo(log->pagePath()).dir();
        const QByteArray text = contentsOf(run.filePath(u"fetch_1.txt"_s));
        QVERIFY2(text.contains(inText), text);
        QCOMPARE(run.entryList({u"*response*"_s}, QDir::Files).join(' '_L1), file);
        const QByteArray page = contentsOf(log->pagePath());
        QCOMPARE(page.contains(QByteArray("<a href=\"" + file.toUtf8() + "\">")), !file.isEmpty());
        QCOMPARE(page.contains(QByteArray("<img src=\"" + file.toUtf8())), type.startsWith("image/"));
        if (!file.isEmpty() && !file.endsWith(u"xml"_s))
            QCOMPARE(contentsOf(run.filePath(file)), body);
    }

    // A tool that lays XML out is used when it is there, and its failure costs nothing.
    void xmlToolIsUsedWhenPresent_data() {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("shown");
        QTest::newRow("present") << QByteArray("#!/bin/sh\necho \"$1 $2\"; cat\n") << u"--format -\n<a/>"_s;
        QTest::newRow("failing") << QByteArray("#!/bin/sh\ncat; exit 1\n") << u"<a/>"_s;
        QTest::newRow("absent") << QByteArray() << u"<a/>"_s;
    }

    void xmlToolIsUsedWhenPresent() {
        QFETCH(QByteArray, script);
        const QString path = folder_->filePath(u"xmllint"_s);
        if (!script.isEmpty()) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(script);
            file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        QTEST(FetchLogBodyFormatter(path).show("<a/>", "text/xml").text, "shown");
    }

    void streamsAreNotedByTheirBeginning_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("shown");
        QTest::newRow("short text") << QByteArray("hello code=S3CRET") << QByteArray("hello code=_snip_\n");
        QTest::newRow("long text") << QByteArray(100'000, 'x')
                                   << QByteArray(QByteArray(4096, 'x') + "\n(the first 4096 bytes)");
        QTest::newRow("binary") << QByteArray(100'000, '\0') << QByteArray("<100000 bytes>");
    }

    void streamsAreNotedByTheirBeginning() {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, shown);
        const auto source = std::make_shared<QBuffer>();
        source->setData(bytes);
        QVERIFY(source->open(QIODevice::ReadOnly));
        auto log = makeLog();
        FetchRecord record = recordOf("https://h/", 200);
        record.request.bodyStream = log->willSendStream(source);
        QCOMPARE(record.request.bodyStream->size(), bytes.size());
        for (int attempt = 0; attempt < 2; ++attempt) { // the second one notes nothing twice
            QCOMPARE(log->willSendStream(record.request.bodyStream), record.request.bodyStream);
            QVERIFY(record.request.bodyStream->seek(0));
            QByteArray sent;
            while (!record.request.bodyStream->atEnd())
                sent += record.request.bodyStream->read(1000);
            QCOMPARE(sent, bytes);
        }
        log->attemptDidEnd(record);
        log->flush();
        const QByteArray text = contentsOf(QFileInfo(log->pagePath()).path() + u"/fetch_1.txt"_s);
        QVERIFY2(text.contains(shown), text.left(6000));
        QVERIFY(text.size() < 6000 && !text.contains("S3CRET"));
    }

    void writeErrorIsReportedOnceAndLoggingGoesOn() {
        auto log = makeLog();
        log->attemptDidEnd(recordOf("https://h/1", 200));
        log->flush();
        const QString run = QFileInfo(log->pagePath()).path();
        QVERIFY(QDir(run).mkdir(u"fetch_2.txt"_s)); // in the way, for root too
        QVERIFY(QDir(run).mkdir(u"fetch_3.txt"_s));
        QStringList warnings;
        static QStringList* sink = nullptr;
        sink = &warnings;
        const auto previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& message) { sink->append(message); });
        for (int number = 2; number <= 4; ++number)
            log->attemptDidEnd(recordOf("https://h/x", 200));
        log->flush();
        qInstallMessageHandler(previous);
        QCOMPARE(warnings.size(), 1);
        QVERIFY2(warnings.constFirst().startsWith(u"GTMHTTPFetcher logging write error:"_s) &&
                     warnings.constFirst().endsWith(QString('('_L1 + run + u"/fetch_2.txt)"_s)),
                 qPrintable(warnings.constFirst()));
        QVERIFY(QFile::exists(run + u"/fetch_4.txt"_s));
        QCOMPARE(contentsOf(log->pagePath()).count("request:"), 4);
    }
};

} // namespace quenby

QTEST_GUILESS_MAIN(quenby::FetchLogTest)
#include "tst_fetchlog.moc"
