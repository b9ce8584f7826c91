// The API client's text helpers, byte for byte, and its user agent.
#include "driveapi/GTLServiceUserAgent.h"
#include "driveapi/GTLUtilities.h"

#include <QTest>

using namespace quenby;
using namespace Qt::StringLiterals;

class TestUtilities : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void addsQueryParameters_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<GTLStringMap>("parameters");
        QTest::addColumn<QByteArray>("url");

        const auto latin = [](const char* text) { return QString::fromLatin1(text); };
        const GTLStringMap one{{latin("a"), latin("b")}};
        QTest::newRow("empty text") << QString() << one << QByteArray();
        QTest::newRow("no parameters") << latin("https://host/path?q=a%20b") << GTLStringMap()
                                       << QByteArray("https://host/path?q=a%20b");
        QTest::newRow("begins the query") << latin("https://host/p") << one << QByteArray("https://host/p?a=b");
        QTest::newRow("continues the query")
            << latin("https://host/p?x=1") << one << QByteArray("https://host/p?x=1&a=b");
        QTest::newRow("sorted without regard to case")
            << latin("https://host/")
            << GTLStringMap{{latin("b"), latin("2")}, {latin("A"), latin("1")}, {latin("C"), latin("3")}}
            << QByteArray("https://host/?A=1&b=2&C=3");
        QTest::newRow("both sides escaped")
            << latin("https://host/") << GTLStringMap{{latin("a&b"), latin("x=y z+\"/?")}, {latin("u"), u"ü"_s}}
            << QByteArray("https://host/?a%26b=x%3Dy+z%2B%22%2F%3F&u=%C3%BC");
    }
    void addsQueryParameters() {
        QFETCH(QString, text);
        QFETCH(GTLStringMap, parameters);
        QTEST(GTLUtilities::URLWithString(text, parameters).toEncoded(), "url");
    }

    void escapes_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("forURI");
        QTest::addColumn<QString>("parameter");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QByteArray>("utf8");

        const auto row = [](const char* name, const QString& text, const char* forURI, const char* parameter,
                            const char* plain, const char* utf8) {
            QTest::newRow(name) << text << QString::fromLatin1(forURI) << QString::fromLatin1(parameter)
                                << QString::fromLatin1(plain) << QByteArray(utf8);
        };
        row("unreserved", u"aZ09-._~"_s, "aZ09-._~", "aZ09-._~", "aZ09-._~", "aZ09-._~");
        row("reserved", u"!*'();:@&=+$,/?%#[]"_s, "%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D",
            "%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D", "!*'();:@&=+$,/?%25%23%5B%5D",
            "!*'();:@&=+$,/?%25#[]");
        row("space", u"a b"_s, "a%20b", "a+b", "a%20b", "a b");
        row("beyond ASCII", u"é\U0001F600\t\x7f"_s, "%C3%A9%F0%9F%98%80%09%7F", "%C3%A9%F0%9F%98%80%09%7F",
            "%C3%A9%F0%9F%98%80%09%7F", "%C3%A9%F0%9F%98%80%09%7F");
        row("line break", u"a\r\nb"_s, "a%0D%0Ab", "a%0D%0Ab", "a%0D%0Ab", "a%0D%0Ab");
    }
    void escapes() {
        QFETCH(QString, text);
        QTEST(GTLUtilities::stringByURLEncodingForURI(text), "forURI");
        QTEST(GTLUtilities::stringByURLEncodingStringParameter(text), "parameter");
        QTEST(GTLUtilities::stringByURLEncodingString(text), "plain");
        QTEST(GTLUtilities::stringByPercentEncodingUTF8ForString(text), "utf8");

        const QString brokenText(QChar(0xD83D));
        QCOMPARE(GTLUtilities::stringByURLEncodingForURI(brokenText), brokenText);
    }

    void comparesVersions_data() {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::addColumn<int>("order");

        QTest::newRow("equal") << u"2.0"_s << u"2.0"_s << 0;
        QTest::newRow("missing counts as 0") << u"2"_s << u"2.0.0"_s << 0;
        QTest::newRow("by number, not by text") << u"1.10"_s << u"1.9"_s << 1;
        QTest::newRow("first difference decides") << u"1.2.9"_s << u"1.3"_s << -1;
        QTest::newRow("empty") << QString() << u"0.0.1"_s << -1;
    }
    void comparesVersions() {
        QFETCH(QString, left);
        QFETCH(QString, right);
        QFETCH(int, order);
        const auto sign = [](std::strong_ordering given) { return given > 0 ? 1 : given < 0 ? -1 : 0; };
        QCOMPARE(sign(GTLUtilities::compareVersion(left, right)), order);
        QCOMPARE(sign(GTLUtilities::compareVersion(right, left)), -order);
    }

    void filtersByKeyPath() {
        struct Entry {
            QString name;
            int number = 0;
            bool operator==(const Entry&) const = default;
        };
        const QList<Entry> entries{{u"a"_s, 1}, {u"b"_s, 2}, {u"c"_s, 1}};
        const QList<Entry> ones = GTLUtilities::objectsFromArray(entries, 1, &Entry::number);
        QCOMPARE(ones.size(), 2);
        QCOMPARE(ones.last().name, u"c"_s);
        QCOMPARE(GTLUtilities::firstObjectFromArray(entries, 2, &Entry::number).name, u"b"_s);
        QVERIFY(GTLUtilities::firstObjectFromArray(entries, 3, &Entry::number) == Entry());
    }

    void composesUserAgent_data() {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("addition");
        QTest::addColumn<QString>("expected");

        QTest::newRow("composed") << u"org.quenby/1.0"_s << QString()
                                  << u"org.quenby/1.0 quenby-drive-client/2.0 SYSTEM (gzip)"_s;
        QTest::newRow("with an addition")
            << u"app/1"_s << u"extra"_s << u"app/1 quenby-drive-client/2.0 SYSTEM extra (gzip)"_s;
        QTest::newRow("already names the library")
            << u"app Quenby-Drive-Client/9"_s << u"extra"_s << u"app Quenby-Drive-Client/9"_s;
    }
    void composesUserAgent() {
        QFETCH(QString, identifier);
        QFETCH(QString, addition);
        QTEST(QString::fromLatin1(composeUserAgent(identifier, u"SYSTEM"_s, addition)), "expected");
    }
};

QTEST_GUILESS_MAIN(TestUtilities)
#include "tst_utilities.moc"
