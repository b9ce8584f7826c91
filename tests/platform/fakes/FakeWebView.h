// A web page without an engine: a test sees what was loaded and run, and plays the page.
//
// Addresses that are among the view's pages play by themselves through the event loop, as an engine would; for all
// others the view waits for the test. Nothing is told from inside load(). Threads: the main thread.
#pragma once

#include "platform/WebView.h"

#include <QHash>
#include <QImage>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <optional>
#include <vector>

namespace quenby::testing {

struct FakeFile {
    QString name = {};
    QByteArray bytes = {};
    MaybeError failure = {}; // after the bytes
    bool stalls = false;     // after the bytes; for ever
    QString mimeType = QStringLiteral("application/octet-stream");
};

// What an address leads to; the first of failure, redirect, file and title that is there.
struct FakePage {
    QString title = {};
    QList<QByteArray> cookies = {}; // as Set-Cookie fields, set before anything else
    QUrl redirect = {};
    MaybeError failure = {};
    std::optional<FakeFile> file = {}; // only browser views take it
    QString text = {};                 // what find() looks through
    QImage icon = {};
};
using FakePages = std::shared_ptr<QHash<QUrl, FakePage>>;

// What the fakes of all kinds of views have in common.
template <typename Interface>
class FakeView : public Interface {
public:
    using typename Interface::NavigationPolicy;
    using typename Interface::ScriptDone;

    explicit FakeView(const WebViewProfile& asked, FakePages pages = std::make_shared<QHash<QUrl, FakePage>>())
        : profile(asked)
        , widget_(new QWidget)
        , pages_(std::move(pages)) {}
    ~FakeView() override { delete widget_; }

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
        const QPointer<FakeView> alive(this);
        const bool isUsed = !policy_ || policy_({url, kind, isMainFrame}) == WebNavigationPolicy::use;
        if (!alive || !isUsed || !isMainFrame)
            return isUsed;
        const bool isNewPlace = kind != WebNavigation::Kind::redirect && kind != WebNavigation::Kind::reload &&
                                kind != WebNavigation::Kind::backForward;
        if (isNewPlace) {
            forward_.clear();
            if (url_.isValid())
                history_.append(url_);
        }
        begin(url, kind == WebNavigation::Kind::redirect);
        return true;
    }
    // The server sends the page that is loading on to another address.
    bool redirect(const QUrl& url) {
        const QPointer<FakeView> alive(this);
        const bool isUsed = navigate(url, WebNavigation::Kind::redirect);
        if (alive && !isUsed)
            isLoading_ = false;
        return isUsed;
    }
    void changeTitle(const QString& title) {
        title_ = title;
        Q_EMIT this->titleChanged(title);
    }
    void finish() {
        const QPointer<FakeView> alive(this);
        isLoading_ = false;
        Q_EMIT this->loadFinished();
        if (alive && !title_.isEmpty())
            Q_EMIT this->titleChanged(title_);
        if (alive)
            didFinish();
    }
    void finish(const QString& title) {
        const QPointer<FakeView> alive(this);
        changeTitle(title);
        if (alive)
            finish();
    }
    // The failing address is the one that is loading, unless the error names another.
    void fail(const Error& error = Error(URLErrorCode::cannotConnectToHost)) {
        isLoading_ = false;
        const bool isNamed = error.detail(errorKey::failingURL).isValid();
        Q_EMIT this->loadFailed(isNamed ? error : error.withDetail(errorKey::failingURL, url_));
    }
    void addCookie(const QByteArray& setCookie) { Q_EMIT this->cookieAdded(setCookie); }
    void requestClose() { Q_EMIT this->closeRequested(); }
    void loseProcess() {
        isLoading_ = false;
        Q_EMIT this->processGone();
    }
    void releaseLeftButton() { Q_EMIT this->leftButtonReleased(); }

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
        goTo(history_, forward_);
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

protected:
    // What further kinds of views do besides, each inside of the call that brought it about.
    virtual void didChangePlace() {}
    virtual void didFinish() {}
    virtual void didReceive(const QUrl&, const FakeFile&) {}

    void goForward() { goTo(forward_, history_); }
    bool canGoForward() const { return !forward_.isEmpty(); }
    FakePage page() const { return pageAt(url_); }
    FakePage pageAt(const QUrl& url) const { return pages_->value(url); }

private:
    using Done = CompletionGate<const QVariant&>;

    void goTo(QList<QUrl>& there, QList<QUrl>& here) {
        const QPointer<FakeView> alive(this);
        const QUrl left = url_;
        if (there.isEmpty() || !navigate(there.last(), WebNavigation::Kind::backForward) || !alive)
            return;
        there.removeLast();
        here.append(left);
    }
    void begin(const QUrl& url, bool isRedirect) {
        const bool wasLoading = std::exchange(isLoading_, true);
        ++generation_;
        url_ = url;
        title_.clear();
        didChangePlace();
        later([this, tellsStart = !isRedirect || !wasLoading] {
            const QPointer<FakeView> alive(this);
            if (tellsStart)
                Q_EMIT this->loadStarted();
            if (alive && isLoading_ && pages_->contains(url_))
                later([this] { play(pages_->value(url_)); });
        });
    }
    void play(const FakePage& page) {
        const QPointer<FakeView> alive(this);
        for (const QByteArray& cookie : page.cookies) {
            if (alive)
                Q_EMIT this->cookieAdded(cookie);
        }
        if (!alive)
            return;
        if (page.failure)
            fail(*page.failure);
        else if (!page.redirect.isEmpty())
            redirect(page.redirect);
        else if (page.file)
            becomeFile(*page.file);
        else
            finish(page.title);
    }
    // The view stays where it was.
    void becomeFile(const FakeFile& file) {
        isLoading_ = false;
        const QUrl from = std::exchange(url_, history_.isEmpty() ? QUrl() : history_.takeLast());
        didReceive(from, file);
    }
    // Unless another load or a stop comes first.
    void later(std::function<void()> function) {
        QTimer::singleShot(0, this, [this, generation = generation_, function = std::move(function)] {
            if (generation == generation_)
                function();
        });
    }

    const QPointer<QWidget> widget_;
    const FakePages pages_;
    NavigationPolicy policy_;
    QUrl url_;
    QString title_;
    QList<QUrl> history_; // before this place, the nearest last
    QList<QUrl> forward_; // after it, likewise
    bool isLoading_ = false;
    int generation_ = 0; // counts loads
    std::vector<std::pair<Done, QString>> waitingScripts_;
};

class FakeWebView final : public FakeView<WebView> {
public:
    using FakeView::FakeView;

    void requestNewWindow(const QUrl& url) { Q_EMIT newWindowRequested(url); }
};

} // namespace quenby::testing
