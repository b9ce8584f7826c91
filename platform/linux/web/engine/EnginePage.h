// The engine's page with the answers to what it asks: the policy decides about navigations, whoever takes downloads
// about those, permissions are refused, and its scripts' messages and file choosers are shown over its window. What it
// writes to its console goes to the log "quenby.web.console" at debug level, without secrets.
//
// Threads: the main thread. The functions may be called from deep inside the engine, and some wait there for the user:
// the page must not be destroyed while isAsking().
#pragma once

#include "platform/WebView.h"
#include "platform/linux/web/engine/PageDialogs.h"

#include <QElapsedTimer>
#include <QWebEnginePage>

class QWebEngineDownloadRequest;

namespace quenby {

class EnginePage final : public QWebEnginePage {
    Q_OBJECT

public:
    using DownloadTaker = std::function<void(QWebEngineDownloadRequest& request)>;
    using Console = std::function<void(const QString& message)>;

    EnginePage(QWebEngineProfile* profile, QObject* parent);

    void setNavigationPolicy(WebView::NavigationPolicy policy) { policy_ = std::move(policy); }
    // Without one, downloads are refused. It accepts the request, or it is refused.
    void setDownloadTaker(DownloadTaker taker) { downloadTaker_ = std::move(taker); }
    // Hears what the page writes, without secrets and cut at a length for people; not all of what never ends.
    void setConsole(Console console) { console_ = std::move(console); }
    void offerDownload(QWebEngineDownloadRequest& request);
    PageDialogs& dialogs() { return dialogs_; }

    // Nobody is there any more who could answer.
    void answerNothing();
    bool isAsking() const { return asking_ > 0; }
    // Deletes the page as soon as it is not asking; it must be.
    void goWhenAnswered() { goes_ = true; }
    // The next navigation is the view's own page: nobody is asked.
    void expectOwnPage() { expectsOwnPage_ = true; }

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    void javaScriptAlert(const QUrl& origin, const QString& message) override;
    bool javaScriptConfirm(const QUrl& origin, const QString& message) override;
    bool javaScriptPrompt(const QUrl& origin, const QString& message, const QString& proposal,
                          QString* answer) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList& proposals,
                            const QStringList& acceptedTypes) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString& message, int lineNumber,
                                  const QString& sourceID) override;

private:
    class Asking;

    QUrl origin() const;
    bool isConsoleFlooded();

    WebView::NavigationPolicy policy_;
    DownloadTaker downloadTaker_;
    Console console_;
    PageDialogs dialogs_;
    int asking_ = 0; // calls that are waiting for their answers, each inside of the one before
    bool goes_ = false;
    bool expectsOwnPage_ = false;
    QElapsedTimer consoleSince_; // this many messages
    int consoleMessages_ = 0;
};

} // namespace quenby
