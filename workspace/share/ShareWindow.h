// One sharing dialog in a window of its own: it shows the page, sizes the window to the dialog in it, and says when it
// is done with.
#pragma once

#include "core/TimeSource.h"
#include "platform/WebView.h"
#include "workspace/share/ShareWindowUi.h"

#include <QObject>
#include <QPointer>
#include <QUrl>

#include <memory>

namespace quenby {

class ctmWindow;
class ActivityIndicator;

// Threads: the main thread. The views' maker must outlive it.
class ShareWindow final : public QObject {
    Q_OBJECT

public:
    // Without an engine the window is there all the same, and says why it is empty.
    ShareWindow(WebViews& webViews, const WebViewProfile& profile, std::shared_ptr<TimeSource> timeSource,
                QObject* parent = nullptr);
    ~ShareWindow() override;

    ctmWindow& window() const { return *window_; }
    // Null without an engine.
    WebView* webShare() const { return webShare_.get(); }
    // Whether the page has finished loading.
    bool done() const { return done_; }

    // The window's title: the file's name.
    void setTitle(const QString& title);
    // The address carries a token: it is kept for trying again, and goes nowhere else.
    void loadWebShare(const QString& address);

Q_SIGNALS:
    // The window has been dismissed, and its page has stopped.
    void removeShareWindow(quenby::ShareWindow* shareWindow);

private:
    void watchPage();
    void loadStarted();
    void loadFinished();
    void load();
    void tellProblem(const QString& heading, const QString& text, bool canTryAgain);

    const std::unique_ptr<ctmWindow> window_;
    const ShareWindowUi ui_;
    // Below the window, because it must go before the widget that it is shown in.
    std::unique_ptr<WebView> webShare_;
    QPointer<ActivityIndicator> progressIndicator_;
    QUrl address_;
    bool done_ = false;
    bool hasFailed_ = false; // since the page began to load
};

} // namespace quenby
