// The provider's page inside the sign-in window: shows it, or says why there is none and offers another try.
//
// Threads: the main thread. It must go before the window.
#pragma once

#include "core/TimeSource.h"
#include "http/URLRequest.h"
#include "platform/WebView.h"

#include <QObject>
#include <QPointer>

#include <chrono>

namespace quenby {

class GTMOAuth2Window;

class SignInPage final : public QObject {
    Q_OBJECT

public:
    // Whether the question settles the matter: a settled navigation is not loaded, a settled failure is not shown.
    struct Questions {
        std::function<bool(const URLRequest& request)> redirected; // each navigation of the main frame
        std::function<bool(const Error& error)> failed;
    };

    // How long a page may take before it is given up.
    static constexpr std::chrono::seconds loadLimit{30};

    SignInPage(GTMOAuth2Window& window, WebViews& webViews, const WebViewProfile& profile,
               std::shared_ptr<TimeSource> timeSource, Questions questions);
    ~SignInPage() override;

    // The page to load, and to begin again with.
    void load(const URLRequest& request);
    void showHTML(const QString& html);
    void stop();
    // The network came back: what failed for want of it is tried again.
    void networkFound();
    WebView* webView() const { return view_.get(); } // null when there is no engine

Q_SIGNALS:
    void titleChanged(const QString& title);
    void loadFinished();
    void cookieAdded(const QByteArray& setCookie);
    void newWindowRequested(const QUrl& url);

private:
    bool makeView();
    void connectView();
    void tryAgain();
    void begin();
    void end();
    void fail(const QString& text);
    void updateWindow();

    const QPointer<GTMOAuth2Window> window_;
    WebViews& webViews_;
    const WebViewProfile profile_;
    const std::shared_ptr<TimeSource> timeSource_;
    const Questions questions_;
    std::unique_ptr<WebView> view_;
    std::unique_ptr<Timer> limit_;
    std::optional<URLRequest> request_;
};

} // namespace quenby
