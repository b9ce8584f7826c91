// Pages go by way of the same proxies as our own connections, and follow the setting while the engine runs.
#include "app/account/ProxySetting.h"
#include "core/DefaultsKeys.h"
#include "platform/linux/web/PluginWebViews.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/support/ScriptedServer.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

class WebProxiesTest : public QObject {
    Q_OBJECT

    ScriptedServer proxy_;

    // Whether the page came, and by way of the proxy.
    bool comesFromProxy(WebView& view, const QString& path) {
        QSignalSpy finished(&view, &WebView::loadFinished);
        QSignalSpy failed(&view, &WebView::loadFailed);
        const QUrl url(u"http://far.invalid"_s + path);
        view.load(url);
        if (!QTest::qWaitFor([&] { return !finished.isEmpty() || !failed.isEmpty(); }, 30'000))
            qFatal("the page neither comes nor fails");
        const bool isAsked = std::any_of(proxy_.requests().begin(), proxy_.requests().end(),
                                         [&url](const auto& request) { return request.target == url.toEncoded(); });
        return isAsked && failed.isEmpty();
    }

private Q_SLOTS:
    void pagesFollowTheSetting() {
        qputenv("http_proxy", proxy_.url().toEncoded());
        proxy_.setHandler([](const ReceivedRequest&) {
            return Answer::with(200, "<title>Far</title>",
                                {{"Content-Type", "text/html"}, {"Cache-Control", "no-store"}});
        });
        FakeDefaults defaults;
        const ProxySetting setting(defaults, makeSystemTimeSource());
        PluginWebViews views(PluginWebViewsPlaces::standard(u"test"_s));
        const auto view = views.create({u"one"_s});
        QVERIFY2(view.ok(), view ? "" : qPrintable(view.error().description()));
        QVERIFY(comesFromProxy(**view, u"/1"_s));

        defaults.setValueForKey(defaultsKey::proxy, u"none"_s);
        comesFromProxy(**view, u"/2"_s); // with this one the engine notices
        QVERIFY(!comesFromProxy(**view, u"/3"_s));
        const auto later = views.create({u"other"_s});
        QVERIFY(later.ok());
        QVERIFY(!comesFromProxy(**later, u"/4"_s));

        defaults.removeValueForKey(defaultsKey::proxy);
        comesFromProxy(**view, u"/5"_s);
        QVERIFY(comesFromProxy(**view, u"/6"_s));
    }
};

QTEST_MAIN(WebProxiesTest)
#include "tst_webproxies.moc"
