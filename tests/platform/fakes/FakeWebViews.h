// Web pages without an engine: a test sees what was loaded and run, and plays the page.
//
// Addresses that are among FakeWebViews::pages() play by themselves through the event loop, as an engine would; for all
// others the view waits for the test. Nothing is told from inside load(). Threads: the main thread.
#pragma once

#include "platform/WebView.h"

#include <QHash>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <vector>

namespace quenby::testing {

// What an address leads to; the first of failure, redirect and title that is there.
struct FakePage {
    QString title = {};
    QList<QByteArray> cookies = {}; // as Set-Cookie fields, set before anything else
    QUrl redirect = {};
    MaybeError failure = {};
};

class FakeWebView final : public WebView {
public:
    using Pages = std::shared_ptr<QHash<QUrl, FakePage>>;

    explicit FakeWebView(const WebViewProfile& asked, Pages pages = std::make_shared<QHash<QUrl, FakePage>>())
        : profile(asked)
        , widget_(new QWidget)
        , pages_(std::move(pages)) {}
    ~FakeWebView() override { delete widget_; }

    // --- What it was asked, in order ------------------------------------------------------------------------------

    const WebViewProfile profile;
    QList<QUrl> loads; // by load(), whatever the policy said
    QStringList htmls; // by setHtml()
    QStringList scripts;
    int stops = 0;
    int backs = 0;

    // What a script yields; nothing without one. With holdsScripts, only releaseScripts() delivers.
    std::function<QVariant(const QString& script)> scriptResult;
    bool holdsScripts = false;
    void releaseScripts() {
        holdsScripts = false;
        for (const auto& [done, script] : std::exchange(waitingScripts_, {}))
            done.deliver(scriptResult ? scriptResult(script) : QVariant());
    }

    // --- What the page does ---------------------------------------------------------------------------------------

    // The page goes elsewhere. Whether the policy let it; then it has begun to load.
    bool navigate(const QUrl& url, WebNavigation::Kind kind = WebNavigation::Kind::linkClicked,
                  bool isMainFrame = true) {
        const QPointer<FakeWebView> alive(this);
        const bool isUsed = !policy_ || policy_({url, kind, isMainFrame}) == WebNavigationPolicy::use;
        if (!alive || !isUsed || !isMainFrame)
            return isUsed;
        if (kind != WebNavigation::Kind::redirect && url_.isValid())
            history_.append(url_);
        begin(url, kind == WebNavigation::Kind::redirect);
        return true;
    }
    // The server sends the page that is loading on to another address.
    bool redirect(const QUrl& url) {
        const QPointer<FakeWebView> alive(this);
        const bool isUsed = navigate(url, WebNavigation::Kind::redirect);
        if (alive && !isUsed)
            isLoading_ = false;
        return isUsed;
    }
    void changeTitle(const QString& title) {
        title_ = title;
        Q_EMIT titleChanged(title);
    }
    void finish() {
        const QPointer<FakeWebView> alive(this);
        isLoading_ = false;
        Q_EMIT loadFinished();
        if (alive && !title_.isEmpty())
            Q_EMIT titleChanged(title_);
    }
    void finish(const QString& title) {
        const QPointer<FakeWebView> alive(this);
        changeTitle(title);
        if (alive)
            finish();
    }
    // The failing address is the one that is loading, unless the error names another.
    void fail(const Error& error = Error(URLErrorCode::cannotConnectToHost)) {
        isLoading_ = false;
        const bool isNamed = error.detail(errorKey::failingURL).isValid();
        Q_EMIT loadFailed(isNamed ? error : error.withDetail(errorKey::failingURL, url_));
    }
    void addCookie(const QByteArray& setCookie) { Q_EMIT cookieAdded(setCookie); }
    void requestNewWindow(const QUrl& url) { Q_EMIT newWindowRequested(url); }
    void requestClose() { Q_EMIT closeRequested(); }
    void loseProcess() {
        isLoading_ = false;
        Q_EMIT processGone();
    }
    void releaseLeftButton() { Q_EMIT leftButtonReleased(); }

    // --- WebView --------------------------------------------------------------------------------------------------

    QWidget* widget() override { return widget_; }
    void load(const QUrl& url) override {
        loads.append(url);
        navigate(url, WebNavigation::Kind::typed);
    }
    // The program's own page: no policy is asked.
    void setHtml(const QString& html, const QUrl& base = {}) override {
        htmls.append(html);
        begin(base.isEmpty() ? QUrl(QStringLiteral("about:blank")) : base, false);
        later([this] { finish(); });
    }
    void stop() override {
        ++stops;
        isLoading_ = false;
        ++generation_;
    }
    void back() override {
        ++backs;
        if (!history_.isEmpty() && navigate(history_.last(), WebNavigation::Kind::backForward)) {
            history_.removeLast(); // what navigate() has added
            history_.removeLast();
        }
    }
    void evaluate(const QString& script, QObject* context, ScriptDone done) override {
        scripts.append(script);
        waitingScripts_.push_back({Done(context, std::move(done)), script});
        if (!holdsScripts)
            releaseScripts();
    }
    void setNavigationPolicy(NavigationPolicy policy) override { policy_ = std::move(policy); }
    QUrl url() const override { return url_; }
    bool isLoading() const override { return isLoading_; }
    bool canGoBack() const override { return !history_.isEmpty(); }

private:
    using Done = CompletionGate<const QVariant&>;

    void begin(const QUrl& url, bool isRedirect) {
        const bool wasLoading = std::exchange(isLoading_, true);
        ++generation_;
        url_ = url;
        title_.clear();
        later([this, tellsStart = !isRedirect || !wasLoading] {
            const QPointer<FakeWebView> alive(this);
            if (tellsStart)
                Q_EMIT loadStarted();
            if (alive && isLoading_ && pages_->contains(url_))
                later([this] { play(pages_->value(url_)); });
        });
    }
    void play(const FakePage& page) {
        const QPointer<FakeWebView> alive(this);
        for (const QByteArray& cookie : page.cookies) {
            if (alive)
                Q_EMIT cookieAdded(cookie);
        }
        if (!alive)
            return;
        if (page.failure)
            fail(*page.failure);
        else if (!page.redirect.isEmpty())
            redirect(page.redirect);
        else
            finish(page.title);
    }
    // Unless another load or a stop comes first.
    void later(std::function<void()> function) {
        QTimer::singleShot(0, this, [this, generation = generation_, function = std::move(function)] {
            if (generation == generation_)
                function();
        });
    }

    const QPointer<QWidget> widget_;
    const Pages pages_;
    NavigationPolicy policy_;
    QUrl url_;
    QString title_;
    QList<QUrl> history_;
    bool isLoading_ = false;
    int generation_ = 0; // counts loads
    std::vector<std::pair<Done, QString>> waitingScripts_;
};

class FakeWebViews final : public WebViews {
public:
    // Addresses that play by themselves, in all views.
    QHash<QUrl, FakePage>& pages() { return *pages_; }

    QStringList forgotten;                    // accounts
    QString unavailable;                      // why there is no engine; empty: there is one
    std::vector<QPointer<FakeWebView>> views; // every view that was made; null when it is gone

    // The newest, which must still be there.
    FakeWebView& last() {
        Q_ASSERT(!views.empty() && views.back());
        return *views.back();
    }

    Result<std::unique_ptr<WebView>> create(const WebViewProfile& profile) override {
        if (!unavailable.isEmpty())
            return Error(URLErrorCode::unknown, {{errorKey::reason, unavailable}});
        auto view = std::make_unique<FakeWebView>(profile, pages_);
        views.emplace_back(view.get());
        return std::unique_ptr<WebView>(std::move(view));
    }
    void forget(const QString& account) override { forgotten.append(account); }
    QString unavailableBecause() const override { return unavailable; }

private:
    FakeWebView::Pages pages_ = std::make_shared<QHash<QUrl, FakePage>>();
};

} // namespace quenby::testing
