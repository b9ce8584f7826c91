// Which addresses belong to a place: none that only looks like it.
#include "core/Endpoints.h"

#include <QTest>

using namespace quenby;

class WebPlacesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void contains_data() {
        QTest::addColumn<QString>("base");
        QTest::addColumn<bool>("withSubdomains");
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("contained");
        const auto rows = [](const char* base, bool withSubdomains, bool contained,
                             std::initializer_list<const char*> addresses) {
            for (const char* address : addresses)
                QTest::addRow("%s in %s", address, base)
                    << QString::fromLatin1(base) << withSubdomains << QString::fromUtf8(address) << contained;
        };
        rows("https://docs.example/a/", false, true,
             {"https://docs.example/a/", "https://docs.example/a/b?c#d", "HTTPS://DOCS.Example/a/",
              "https://docs.example:443/a/", "https://docs.example./a/", "https://docs.example/%61/",
              "https://docs.example/b/../a/", "https://docs.example/%2e/a/", "https://@docs.example/a/",
              "https://docs%2Eexample/a/", "https://\uff44ocs.example/a/"});
        rows("https://docs.example/a/", false, false,
             {"http://docs.example/a/",
              "https://docs.example:8443/a/",
              "https://docs.example:80/a/",
              "https://docs.example/a",
              "https://docs.example/A/",
              "https://docs.example/a%2F",
              "https://docs.example/a/../b",
              "https://docs.example",
              "https://docs.example/?/a/",
              "https://docs.example/#/a/",
              "https://u@docs.example/a/",
              "https://u:p@docs.example/a/",
              "https://:@docs.example/a/",
              "https://docs.example@evil.example/a/",
              "https://docs.example.evil.example/a/",
              "https://evil.example/docs.example/a/",
              "https://sub.docs.example/a/",
              "https://notdocs.example/a/",
              "https://docs.example%2e.evil.example/a/",
              "https://d\u043ecs.example/a/",
              "https:///a/",
              "docs.example/a/",
              "//docs.example/a/",
              "/a/",
              "",
              "https://docs.example\\@evil.example/a/"});
        rows("https://example/", true, true, {"https://example", "https://a.example/", "https://a.b.example./x"});
        rows("https://example/", true, false,
             {"https://notexample/", "https://example.evil/", "https://.evil/example", "http://a.example/"});
        rows("http://127.0.0.1:4711/docs/", false, true, {"http://127.0.0.1:4711/docs/x"});
        rows("http://127.0.0.1:4711/docs/", false, false,
             {"http://127.0.0.1/docs/x", "http://127.0.0.1:4712/docs/x", "https://127.0.0.1:4711/docs/x",
              "http://127.0.0.1:4711/docsx", "http://127.0.0.1:4711/x/docs/",
              "http://127.0.0.1.evil.example:4711/docs/"});
        rows("", true, false, {"", "/", "https://example/", "about:blank"});
    }
    void contains() {
        QFETCH(QString, base);
        QFETCH(bool, withSubdomains);
        QFETCH(QString, address);
        const auto hosts = withSubdomains ? WebPlace::Hosts::withSubdomains : WebPlace::Hosts::exactly;
        QTEST((WebPlace{QUrl(base), hosts}.contains(QUrl(address))), "contained");
    }

    void narrowerPlaces() {
        const WebPlace place{QUrl(QStringLiteral("https://example/a/")), WebPlace::Hosts::withSubdomains};
        const QUrl inside(QStringLiteral("https://x.example/a/b/c?d"));
        const WebPlace narrow = place.within(QStringLiteral("/b/c"));
        QCOMPARE(narrow.base, QUrl(QStringLiteral("https://example/a/b/c")));
        QVERIFY(narrow.isAt(inside));
        QVERIFY(!narrow.isAt(QUrl(QStringLiteral("https://x.example/a/b/c/"))));
        QVERIFY(narrow.contains(QUrl(QStringLiteral("https://x.example/a/b/cd"))));
        QVERIFY(!narrow.contains(QUrl(QStringLiteral("https://x.example/b/c"))));

        QUrl plain = inside;
        plain.setScheme(QStringLiteral("http"));
        QVERIFY(!place.contains(plain));
        QVERIFY(place.containsInEitherScheme(plain));
        QVERIFY(place.containsInEitherScheme(inside));
        plain.setPort(443);
        QVERIFY(!place.containsInEitherScheme(plain));
        plain.setScheme(QStringLiteral("ftp"));
        QVERIFY(!place.containsInEitherScheme(plain));
    }

    // A place without a host would hold nothing, and its rules would say nothing of it.
    void placesHaveHosts() {
        for (const Endpoints& endpoints :
             {Endpoints::provider(), Endpoints::localDrive(QUrl(QStringLiteral("http://127.0.0.1:4711")))}) {
            const WebPlaces& at = endpoints.webPlaces;
            for (const WebPlace& place :
                 {at.drive, at.docs, at.viewer, at.userContent, at.accounts, at.search, at.maps})
                QVERIFY2(place.contains(place.base) && place.base.host() != QString(),
                         qPrintable(place.base.toString()));
            QVERIFY(at.drive.contains(endpoints.webURL));
            QVERIFY(at.providerDomain.contains(at.docs.base));
        }
    }
};

QTEST_GUILESS_MAIN(WebPlacesTest)
#include "tst_webplaces.moc"
