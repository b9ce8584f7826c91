// A web page in a widget.
//
// Threads: the main thread. The engine is loaded with the first view; until then it costs nothing.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QObject>
#include <QUrl>
#include <QVariant>

#include <functional>
#include <memory>

class QWidget;

namespace quenby {

struct WebNavigation {
    enum class Kind { typed, linkClicked, formSubmitted, backForward, reload, redirect, other };

    QUrl url;
    Kind kind = Kind::other;
    bool isMainFrame = true;
};
enum class WebNavigationPolicy { use, ignore };

// A script's messages, questions and file choosers appear over the view's window by themselves. The engine rests while
// one is open, with all of its pages and downloads; the program does not. The view may be destroyed meanwhile.
class WebView : public QObject {
    Q_OBJECT

public:
    using NavigationPolicy = std::function<WebNavigationPolicy(const WebNavigation& navigation)>;
    using ScriptDone = std::function<void(const QVariant& result)>;

    // Owned by the view until it is put into a parent widget; the view must be destroyed before that parent.
    virtual QWidget* widget() = 0;
    virtual void load(const QUrl& url) = 0;
    virtual void setHtml(const QString& html, const QUrl& base = {}) = 0;
    virtual void stop() = 0;
    virtual void back() = 0;
    // Runs in the page's main frame; an invalid value for a script that fails or yields nothing.
    virtual void evaluate(const QString& script, QObject* context, ScriptDone done) = 0;
    // Asked before each navigation, redirects included; everything is used without one.
    virtual void setNavigationPolicy(NavigationPolicy policy) = 0;
    virtual QUrl url() const = 0;
    virtual bool isLoading() const = 0;
    virtual bool canGoBack() const = 0;

Q_SIGNALS:
    void loadStarted();
    // The page is there as far as it will come.
    void loadFinished();
    // The main frame's page could not be loaded; errorKey::failingURL names its address. Not for navigations that the
    // policy ignored, nor for stop().
    void loadFailed(const quenby::Error& error);
    // document.title after a change, and again when a load has finished.
    void titleChanged(const QString& title);
    // A cookie as the page's server set it, in the form of a Set-Cookie field (RFC 6265, section 4.1).
    void cookieAdded(const QByteArray& setCookie);
    // The page wants to open a window; none is opened.
    void newWindowRequested(const QUrl& url);
    // The page closes itself.
    void closeRequested();
    // The page's process died. The view shows nothing until something is loaded.
    void processGone();
    // The user let go of the left button over the page; the page has seen it.
    void leftButtonReleased();
};

class BrowserView;

struct WebViewProfile {
    // Empty: a private session, whose cookies and cache end with the view; views to browse with share one, which ends
    // with the last of them. Otherwise the name of an account, whose cookies and cache are kept under the user's
    // folders.
    QString account;
    // What pages are told of the program; empty: the engine's own words. It holds for all views of the account, from
    // the first that has one.
    QString userAgent = {};
};

class WebViews : public PlatformService {
public:
    // Fails with the reason when there is no engine.
    virtual Result<std::unique_ptr<WebView>> create(const WebViewProfile& profile) = 0;
    virtual Result<std::unique_ptr<BrowserView>> createBrowser(const WebViewProfile& profile) = 0;
    // Forgets an account's cookies and cache, also in the views that show it.
    virtual void forget(const QString& account) = 0;
};

} // namespace quenby
