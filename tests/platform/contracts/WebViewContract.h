// What every WebView must do.
#pragma once

#include "platform/WebView.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>

namespace quenby::testing {

// Somewhere with these pages:
//   /a, /b       pages titled "Page a" and "Page b"; /a sets the cookie a=1
//   /redirect    leads to /b
//   /broken      cannot be loaded
//   /never       never answers
struct WebSite {
    std::function<QUrl(const QString& path)> url;
};

// What a view told, by the signals' names.
class WebViewRecord : public QObject {
public:
    explicit WebViewRecord(WebView& view) {
        connect(&view, &WebView::loadStarted, this, [this] { events.append(QStringLiteral("started")); });
        connect(&view, &WebView::loadFinished, this, [this] { events.append(QStringLiteral("finished")); });
        connect(&view, &WebView::loadFailed, this, [this](const Error& error) {
            events.append(QStringLiteral("failed"));
            failingURLs.append(error.detail(errorKey::failingURL).toUrl());
        });
        connect(&view, &WebView::titleChanged, this, [this](const QString& title) { titles.append(title); });
        connect(&view, &WebView::cookieAdded, this, [this](const QByteArray& field) { cookies.append(field); });
    }
    bool hasTold(const char* event) const { return events.contains(QLatin1String(event)); }

    QStringList events;
    QList<QUrl> failingURLs;
    QStringList titles;
    QList<QByteArray> cookies;
};

inline void webViewTellsHowALoadGoes(WebView& view, const WebSite& site) {
    WebViewRecord record(view);
    view.load(site.url(QStringLiteral("/a")));
    QCOMPARE(record.events, QStringList()); // never from inside
    QTRY_COMPARE(record.titles.value(record.titles.size() - 1), QStringLiteral("Page a"));
    QTRY_COMPARE(record.events, (QStringList{QStringLiteral("started"), QStringLiteral("finished")}));
    QVERIFY(!view.isLoading());
    QVERIFY(!view.canGoBack());
    QCOMPARE(view.url(), site.url(QStringLiteral("/a")));
    QTRY_COMPARE(record.cookies.size(), 1);
    QVERIFY2(record.cookies.front().startsWith("a=1"), record.cookies.front().constData());

    view.load(site.url(QStringLiteral("/b")));
    QTRY_COMPARE(record.titles.value(record.titles.size() - 1), QStringLiteral("Page b"));
    QTRY_VERIFY(view.canGoBack());
    view.back();
    QTRY_COMPARE(view.url(), site.url(QStringLiteral("/a")));
    QTRY_VERIFY(!view.canGoBack());
}

inline void webViewAsksBeforeItGoesAnywhere(WebView& view, const WebSite& site) {
    WebViewRecord record(view);
    QList<WebNavigation::Kind> kinds;
    QUrl refused = site.url(QStringLiteral("/b"));
    view.setNavigationPolicy([&](const WebNavigation& navigation) {
        kinds.append(navigation.kind);
        return navigation.url == refused ? WebNavigationPolicy::ignore : WebNavigationPolicy::use;
    });
    view.load(site.url(QStringLiteral("/redirect")));
    QTRY_COMPARE(kinds, (QList{WebNavigation::Kind::typed, WebNavigation::Kind::redirect}));
    QTRY_VERIFY(!view.isLoading());

    refused.clear(); // nothing is left over from what was refused
    view.load(site.url(QStringLiteral("/redirect")));
    QTRY_VERIFY(record.hasTold("finished"));
    QCOMPARE(view.url(), site.url(QStringLiteral("/b")));
    QVERIFY(!record.hasTold("failed"));
    view.setNavigationPolicy({});
}

inline void webViewShowsWhatTheProgramGivesIt(WebView& view) {
    WebViewRecord record(view);
    bool isAsked = false;
    view.setNavigationPolicy([&](const WebNavigation&) {
        isAsked = true;
        return WebNavigationPolicy::ignore;
    });
    view.setHtml(QStringLiteral("<p>Own</p>"));
    QTRY_VERIFY(record.hasTold("finished"));
    QVERIFY(!isAsked);
    view.setNavigationPolicy({});
}

inline void webViewTellsWhatFailed(WebView& view, const WebSite& site) {
    WebViewRecord record(view);
    view.load(site.url(QStringLiteral("/broken")));
    QTRY_COMPARE(record.failingURLs, QList<QUrl>{site.url(QStringLiteral("/broken"))});
    QVERIFY(!record.hasTold("finished"));
    QVERIFY(!view.isLoading());
}

inline void webViewStopsSilently(WebView& view, const WebSite& site) {
    WebViewRecord record(view);
    view.load(site.url(QStringLiteral("/never")));
    QTRY_VERIFY(record.hasTold("started"));
    view.stop();
    QTRY_VERIFY(!view.isLoading());
    view.load(site.url(QStringLiteral("/a")));
    QTRY_VERIFY(record.hasTold("finished"));
    QVERIFY(!record.hasTold("failed"));
}

inline void webViewAnswersEachScriptOnce(WebView& view) {
    QList<QVariant> results;
    const auto take = [&results](const QVariant& result) { results.append(result); };
    QObject context;
    view.setHtml(QStringLiteral("<p>Own</p>"));
    view.evaluate(QStringLiteral("6 * 7"), &context, take);
    view.evaluate(QStringLiteral("undefined"), &context, take);
    QVERIFY(results.isEmpty());
    QTRY_COMPARE(results.size(), 2);
    QCOMPARE(results.at(0).toInt(), 42);
    QVERIFY(!results.at(1).isValid());
}

// The worst moment for it: the page is in the middle of a question.
inline void webViewMayGoInsideOfItsQuestion(std::unique_ptr<WebView> view, const WebSite& site) {
    const QPointer<QWidget> widget = view->widget();
    auto* asking = view.get();
    asking->setNavigationPolicy([&view](const WebNavigation&) {
        view.reset();
        return WebNavigationPolicy::use;
    });
    asking->load(site.url(QStringLiteral("/a")));
    QTRY_VERIFY(!view);
    QTRY_VERIFY(!widget);
}

} // namespace quenby::testing
