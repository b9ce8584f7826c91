#include "http/GTMCookieStorage.h"
#include "http/SetCookieParser.h"
#include "tests/support/ManualTimeSource.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QUrl origin(u"https://www.example.com/dir/page?q"_s);

QList<QNetworkCookie> parsed(const QByteArray& field, const QUrl& url = origin) {
    HeaderFields headers;
    headers.append("Set-Cookie", field);
    return parseSetCookieFields(headers, url, ManualTimeSource().now());
}

} // namespace

class CookiesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // RFC 6265, section 5.2. The last column is "name|value|domain|path|flags|expiry in seconds from now".
    void setCookieFields_data() {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("cookie"); // empty: none
        const auto row = [](const char* name, const QByteArray& field, const char* cookie) {
            QTest::newRow(name) << field << QString::fromLatin1(cookie);
        };
        row("plain", "SID=31d4d96e", "SID|31d4d96e|www.example.com|/dir||");
        row("white space", "  SID =  31d4 d96e  ;", "SID|31d4 d96e|www.example.com|/dir||");
        row("quotes belong to the value", "a=\"b c\"", "a|\"b c\"|www.example.com|/dir||");
        row("further equals signs", "a=b=c==", "a|b=c==|www.example.com|/dir||");
        row("a comma is no separator", "a=1,b=2", "a|1,b=2|www.example.com|/dir||");
        row("an empty value", "a=", "a||www.example.com|/dir||");
        row("no name", "=b", "");
        row("no equals sign", "justname; Path=/", "");
        row("empty", "", "");
        row("flags in any case", "a=b; SECURE; httponly; unknown=1", "a|b|www.example.com|/dir|SH|");
        row("path", "a=b; Path=/x/y", "a|b|www.example.com|/x/y||");
        row("a path that is none", "a=b; Path=x", "a|b|www.example.com|/dir||");
        row("the last path counts", "a=b; Path=/x; Path=/y", "a|b|www.example.com|/y||");
        row("domain", "a=b; Domain=Example.COM", "a|b|.example.com|/dir||");
        row("a dotted domain", "a=b; Domain=.example.com", "a|b|.example.com|/dir||");
        row("its own host as a domain", "a=b; Domain=www.example.com", "a|b|.www.example.com|/dir||");
        row("an empty domain", "a=b; Domain=", "a|b|www.example.com|/dir||");
        row("a foreign domain", "a=b; Domain=other.com", "");
        row("a domain below", "a=b; Domain=x.www.example.com", "");
        row("the end of a name", "a=b; Domain=ample.com", "");
        row("everybody's domain", "a=b; Domain=com", "");
        row("max age", "a=b; Max-Age=60", "a|b|www.example.com|/dir||60");
        row("max age wins", "a=b; Max-Age=60; Expires=Wed, 01 Jan 2025 00:00:00 GMT", "a|b|www.example.com|/dir||60");
        row("gone", "a=b; Max-Age=0", "a|b|www.example.com|/dir||-1");
        row("long gone", "a=b; Max-Age=-99999999999999999999", "a|b|www.example.com|/dir||-1");
        row("for ever", "a=b; Max-Age=99999999999999999999", "a|b|www.example.com|/dir||34560000");
        row("no age", "a=b; Max-Age=6x", "a|b|www.example.com|/dir||");
        row("expires", "a=b; Expires=Thu, 01 Jan 2026 12:01:00 GMT", "a|b|www.example.com|/dir||60");
        row("expires never", "a=b; expires=never", "a|b|www.example.com|/dir||");
        row("no such day", "a=b; expires=Sun, 31 Feb 2026 12:01:00 GMT", "a|b|www.example.com|/dir||");
    }
    void setCookieFields() {
        QFETCH(QByteArray, field);
        const auto cookies = parsed(field);
        QString seen;
        for (const QNetworkCookie& found : cookies) {
            const qint64 left = ManualTimeSource().now().secsTo(found.expirationDate());
            seen += QStringList{QString::fromLatin1(found.name()),
                                QString::fromLatin1(found.value()),
                                found.domain(),
                                found.path(),
                                (found.isSecure() ? u"S"_s : QString()) + (found.isHttpOnly() ? u"H"_s : QString()),
                                found.isSessionCookie() ? QString() : QString::number(left)}
                        .join('|'_L1);
        }
        QTEST(seen, "cookie");
    }

    void domainsOfOddHosts() {
        QCOMPARE(parsed("a=b; Domain=127.0.0.1", QUrl(u"http://127.0.0.1/"_s)).first().domain(), u"127.0.0.1"_s);
        QVERIFY(parsed("a=b; Domain=0.0.1", QUrl(u"http://127.0.0.1/"_s)).isEmpty());
        QCOMPARE(parsed("a=b; Domain=localhost", QUrl(u"http://localhost"_s)).first().domain(), u"localhost"_s);
        QCOMPARE(parsed("a=b", QUrl(u"http://localhost"_s)).first().path(), u"/"_s);
    }

    void isSentTo_data() {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<bool>("sent");
        const auto row = [](const char* field, const char* from, const char* to, bool sent) {
            QTest::addRow("%s from %s to %s", field, from, to)
                << QByteArray(field) << QString::fromLatin1(from) << QString::fromLatin1(to) << sent;
        };
        row("a=b", "https://x.com/", "https://X.com/", true);
        row("a=b", "https://x.com/", "https://www.x.com/", false);
        row("a=b", "https://x.com/", "https://badx.com/", false);
        row("a=b; Domain=x.com", "https://x.com/", "https://x.com/", true);
        row("a=b; Domain=x.com", "https://x.com/", "https://a.b.x.com/", true);
        row("a=b; Domain=x.com", "https://x.com/", "https://badx.com/", false);
        row("a=b; Path=/a", "https://x.com/", "https://x.com/a", true);
        row("a=b; Path=/a", "https://x.com/", "https://x.com/a/c", true);
        row("a=b; Path=/a", "https://x.com/", "https://x.com/b", false);
        row("a=b; Path=/", "https://x.com/", "https://x.com", true);
        row("a=b; Secure", "https://x.com/", "HTTPS://x.com/", true);
        row("a=b; Secure", "https://x.com/", "http://x.com/", false);
        row("a=b", "http://localhost/", "http://LOCALHOST/", true);
    }
    void isSentTo() {
        QFETCH(QByteArray, field);
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(bool, sent);
        GTMCookieStorage storage(std::make_shared<ManualTimeSource>());
        storage.setCookies(parsed(field, QUrl(from)));
        QCOMPARE(storage.cookies().size(), 1);
        QCOMPARE(storage.cookieHeaderForURL(QUrl(to)), QByteArray(sent ? "a=b" : ""));
    }

    void replacesExpiresAndDeletes() {
        const auto time = std::make_shared<ManualTimeSource>();
        GTMCookieStorage storage(time);
        storage.setCookies(parsed("a=1; Path=/") + parsed("b=2; Path=/") + parsed("a=other; Path=/dir"));
        storage.setCookies(parsed("a=3; Path=/; Max-Age=60"));
        QCOMPARE(storage.cookieHeaderForURL(origin), "b=2; a=other; a=3"); // in the order of the store
        QCOMPARE(storage.cookieMatchingCookie(parsed("a=x; Path=/").first())->value(), "3");
        time->advance(61s);
        QCOMPARE(storage.cookieHeaderForURL(origin), "b=2; a=other");
        storage.setCookies(parsed("b=gone; Path=/; Expires=Wed, 01 Jan 2025 00:00:00 GMT"));
        QCOMPARE(storage.cookieHeaderForURL(origin), "a=other");
        storage.deleteCookie(parsed("a=any; Path=/dir").first());
        QVERIFY(storage.cookiesForURL(origin).isEmpty());
        storage.setCookies({QNetworkCookie("nodomain", "1")});
        QVERIFY(storage.cookies().isEmpty());
    }
};

QTEST_GUILESS_MAIN(CookiesTest)
#include "tst_cookies.moc"
