// No address outside the service may sign the user out, save a file by the policy, or pass for the service's own tab,
// whatever pieces of the service's addresses it is made of.
#include "tests/workspace/policy/PolicyRows.h"
#include "workspace/policy/NavigationPolicy.h"

#include <QRandomGenerator>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int rounds = 20'000;

class HostileAddresses {
public:
    explicit HostileAddresses(quint32 seed)
        : random_(seed) {}

    // Its host, port, scheme or user information is not the service's.
    QString next() {
        const QString scheme = chance(5) ? QStringLiteral("http://") : QStringLiteral("https://");
        switch (random_.bounded(5)) {
        case 0: // at the service, but by another port
            return scheme + userInfo() + anyHost() + pick({":8443", ":4712", ":22", ":1"}) + rest();
        case 1: // a host of the local Drive's that the provider never has, and the other way round
            return QStringLiteral("https://127.0.0.1:4711") + rest();
        case 2: // at the service, but as somebody
            return scheme + pick({"a@", "a:b@", ":@", "docs.google.com@"}) + anyHost() + rest();
        default:
            return scheme + userInfo() + foreignHost() + pick({"", "", ":443", ":80", ":4711", "."}) + rest();
        }
    }

private:
    bool chance(int oneIn) { return random_.bounded(oneIn) == 0; }

    QString pick(std::initializer_list<const char*> from) {
        return QString::fromUtf8(from.begin()[random_.bounded(static_cast<int>(from.size()))]);
    }

    QString anyHost() {
        return pick({"accounts.google.com", "docs.google.com", "drive.google.com", "www.google.com", "google.com",
                     "doc-1.googleusercontent.com", "googleusercontent.com", "127.0.0.1"});
    }

    QString foreignHost() {
        const QString evil =
            pick({"evil.example", "example.org", "com.evil", "xn--ggle-55da.com", "127.0.0.2", "[::1]"});
        switch (random_.bounded(7)) {
        case 0:
            return pick({"a.", "docs-", "x", ""}) +
                   pick({"notgoogle.com", "evilgoogleusercontent.com", "google.com.co"});
        case 1: // letters of another alphabet
            return pick({"drive.g\u043eogle.com", "docs.g\u043e\u043egle.com", "\u0430ccounts.google.com.evil.example",
                         "accounts.google.c\u043em", "127.0.0.1\u0430"});
        case 2:
            return anyHost().replace(QLatin1Char('.'), QLatin1Char('-')) + QStringLiteral(".example");
        case 3:
            return evil;
        default:
            return evil.contains(QLatin1Char('[')) || evil.startsWith(QLatin1Char('1'))
                       ? evil
                       : anyHost() + pick({".", "-", "..", "%2e"}) + evil;
        }
    }

    QString userInfo() { return chance(4) ? anyHost() + pick({"@", ":443@", ":x@", "%2FLogout@", "%40@"}) : QString(); }

    // Half of them are exactly what the service's addresses have there.
    QString rest() {
        QString text = pick({"/Logout?service=wise", "/accounts/Logout?service=wise", "/u/0/Logout",
                             "/document/d/1/export?format=docx&id=1", "/docs/document/export?format=pdf&id=1",
                             "/presentation/d/1/export/pdf?id=1", "/docs/drawings/d/1/export/png?id=1",
                             "/spreadsheets/d/1/export?format=csv&id=1", "/e/export-result?authuser=0&archiveId=1",
                             "/viewer/1?print=true", "/www/maps/d/drive", "/maps/d/drive", "/docs/securesc/1",
                             "/usercontent/docs/securesc/1"});
        if (chance(2))
            return text;
        for (int i = random_.bounded(5); i > 0; --i)
            text.insert(random_.bounded(static_cast<int>(text.size()) + 1),
                        pick({"//", "@", "?", "#", "/../", "%2F", "%3F", "%40", "\\", ":", "&",
                              "https://accounts.google.com/Logout?service=wise",
                              "docs.google.com/document/export?format=docx&id=1", "@docs.google.com",
                              "googleusercontent.com/docs/securesc", "127.0.0.1:4711"}));
        return text.startsWith(QLatin1Char('/')) ? text : QLatin1Char('/') + text;
    }

    QRandomGenerator random_;
};

} // namespace

class HostileAddressesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void areNeverTakenForTheService_data() {
        QTest::addColumn<QString>("of");
        QTest::newRow("provider") << QString();
        QTest::newRow("local Drive") << QStringLiteral("/");
    }
    void areNeverTakenForTheService() {
        QFETCH(QString, of);
        const Endpoints endpoints = of.isEmpty() ? Endpoints::provider() : endpointsFor(of);
        bool isNumber = false;
        const quint32 given = qEnvironmentVariable("QUENBY_TEST_SEED").toUInt(&isNumber);
        const quint32 seed = isNumber ? given : QRandomGenerator::global()->generate();
        qInfo("QUENBY_TEST_SEED=%u", seed);
        HostileAddresses addresses(seed);
        int usable = 0;
        for (int i = 0; i < rounds; ++i) {
            const QString text = addresses.next();
            const QUrl url(text);
            usable += isPageAddress(url);
            // As a click on a link, as a frame, and as where a redirect of the Drive's own page leads.
            for (const QUrl& source : {url, endpoints.webURL}) {
                for (const bool isMainFrame : {true, false}) {
                    const PageDecision decision = decidePolicyForNavigationAction(
                        {.source = source, .request = url, .isMainFrame = isMainFrame}, endpoints);
                    QVERIFY2(decision.verdict != PageVerdict::logOut, qPrintable(text));
                    QVERIFY2(decision.verdict != PageVerdict::download, qPrintable(text));
                    QVERIFY2(!decision.newTab, qPrintable(text));
                }
            }
            QVERIFY2(!decidePolicyForNewWindowAction(url, endpoints).newTab, qPrintable(text));
            QVERIFY2(decidePolicyForMIMEType(url, endpoints) == PageVerdict::use, qPrintable(text));
        }
        // Otherwise the addresses would be too broken to show anything.
        QVERIFY2(usable > rounds / 3, qPrintable(QString::number(usable)));
    }
};

QTEST_GUILESS_MAIN(HostileAddressesTest)
#include "tst_hostileaddresses.moc"
