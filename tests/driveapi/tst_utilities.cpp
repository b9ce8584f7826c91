// The API client's text helpers, byte for byte, and its user agent.
#include "driveapi/GTLServiceUserAgent.h"
#include "driveapi/GTLUtilities.h"

#include <QTest>

using namespace quenby;

class TestUtilities : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void addsQueryParameters_data();
    void addsQueryParameters();
    void escapes_data();
    void escapes();
    void comparesVersions_data();
    void comparesVersions();
    void filtersByKeyPath();
    void composesUserAgent_data();
    void composesUserAgent();
};

void TestUtilities::addsQueryParameters_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<GTLStringMap>("parameters");
    QTest::addColumn<QByteArray>("url");

    const auto latin = [](const char* text) { return QString::fromLatin1(text); };
    const GTLStringMap one{{latin("a"), latin("b")}};
    QTest::newRow("empty text") << QString() << one << QByteArray();
    QTest::newRow("no parameters") << latin("https://host/path?q=a%20b") << GTLStringMap()
                                   << QByteArray("https://host/path?q=a%20b");
    QTest::newRow("begins the query") << latin("https://host/p") << one << QByteArray("https://host/p?a=b");
    QTest::newRow("continues the query") << latin("https://host/p?x=1") << one << QByteArray("https://host/p?x=1&a=b");
    QTest::newRow("sorted without regard to case")
        << latin("https://host/")
        << GTLStringMap{{latin("b"), latin("2")}, {latin("A"), latin("1")}, {latin("C"), latin("3")}}
        << QByteArray("https://host/?A=1&b=2&C=3");
    QTest::newRow("both sides escaped") << latin("https://host/")
                                        << GTLStringMap{{latin("a&b"), latin("x=y z+\"/?")},
                                                        {latin("u"), QStringLiteral("ü")}}
                                        << QByteArray("https://host/?a%26b=x%3Dy+z%2B%22%2F%3F&u=%C3%BC");
}

void TestUtilities::addsQueryParameters() {
    QFETCH(QString, text);
    QFETCH(GTLStringMap, parameters);
    QFETCH(QByteArray, url);
    QCOMPARE(GTLUtilities::URLWithString(text, parameters).toEncoded(), url);
}

void TestUtilities::escapes_data() {
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
    row("unreserved", QStringLiteral("aZ09-._~"), "aZ09-._~", "aZ09-._~", "aZ09-._~", "aZ09-._~");
    row("reserved", QStringLiteral("!*'();:@&=+$,/?%#[]"), "%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D",
        "%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D", "!*'();:@&=+$,/?%25%23%5B%5D",
        "!*'();:@&=+$,/?%25#[]");
    row("space", QStringLiteral("a b"), "a%20b", "a+b", "a%20b", "a b");
    row("beyond ASCII", QStringLiteral("é\U0001F600\t\x7f"), "%C3%A9%F0%9F%98%80%09%7F", "%C3%A9%F0%9F%98%80%09%7F",
        "%C3%A9%F0%9F%98%80%09%7F", "%C3%A9%F0%9F%98%80%09%7F");
    row("line break", QStringLiteral("a\r\nb"), "a%0D%0Ab", "a%0D%0Ab", "a%0D%0Ab", "a%0D%0Ab");
}

void TestUtilities::escapes() {
    QFETCH(QString, text);
    QTEST(GTLUtilities::stringByURLEncodingForURI(text), "forURI");
    QTEST(GTLUtilities::stringByURLEncodingStringParameter(text), "parameter");
    QTEST(GTLUtilities::stringByURLEncodingString(text), "plain");
    QTEST(GTLUtilities::stringByPercentEncodingUTF8ForString(text), "utf8");

    const QString brokenText(QChar(0xD83D));
    QCOMPARE(GTLUtilities::stringByURLEncodingForURI(brokenText), brokenText);
}

void TestUtilities::comparesVersions_data() {
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<int>("order");

    QTest::newRow("equal") << QStringLiteral("2.0") << QStringLiteral("2.0") << 0;
    QTest::newRow("missing counts as 0") << QStringLiteral("2") << QStringLiteral("2.0.0") << 0;
    QTest::newRow("by number, not by text") << QStringLiteral("1.10") << QStringLiteral("1.9") << 1;
    QTest::newRow("first difference decides") << QStringLiteral("1.2.9") << QStringLiteral("1.3") << -1;
    QTest::newRow("empty") << QString() << QStringLiteral("0.0.1") << -1;
}

void TestUtilities::comparesVersions() {
    QFETCH(QString, left);
    QFETCH(QString, right);
    QFETCH(int, order);
    const auto sign = [](std::strong_ordering given) { return given > 0 ? 1 : given < 0 ? -1 : 0; };
    QCOMPARE(sign(GTLUtilities::compareVersion(left, right)), order);
    QCOMPARE(sign(GTLUtilities::compareVersion(right, left)), -order);
}

void TestUtilities::filtersByKeyPath() {
    struct Entry {
        QString name;
        int number = 0;
        bool operator==(const Entry&) const = default;
    };
    const QList<Entry> entries{{QStringLiteral("a"), 1}, {QStringLiteral("b"), 2}, {QStringLiteral("c"), 1}};
    const QList<Entry> ones = GTLUtilities::objectsFromArray(entries, 1, &Entry::number);
    QCOMPARE(ones.size(), 2);
    QCOMPARE(ones.last().name, QStringLiteral("c"));
    QCOMPARE(GTLUtilities::firstObjectFromArray(entries, 2, &Entry::number).name, QStringLiteral("b"));
    QVERIFY(GTLUtilities::firstObjectFromArray(entries, 3, &Entry::number) == Entry());
}

void TestUtilities::composesUserAgent_data() {
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("addition");
    QTest::addColumn<QString>("expected");

    QTest::newRow("composed") << QStringLiteral("org.quenby/1.0") << QString()
                              << QStringLiteral("org.quenby/1.0 quenby-drive-client/2.0 SYSTEM (gzip)");
    QTest::newRow("with an addition") << QStringLiteral("app/1") << QStringLiteral("extra")
                                      << QStringLiteral("app/1 quenby-drive-client/2.0 SYSTEM extra (gzip)");
    QTest::newRow("already names the library") << QStringLiteral("app Quenby-Drive-Client/9") << QStringLiteral("extra")
                                               << QStringLiteral("app Quenby-Drive-Client/9");
}

void TestUtilities::composesUserAgent() {
    QFETCH(QString, identifier);
    QFETCH(QString, addition);
    QTEST(QString::fromLatin1(composeUserAgent(identifier, QStringLiteral("SYSTEM"), addition)), "expected");
}

QTEST_GUILESS_MAIN(TestUtilities)
#include "tst_utilities.moc"
