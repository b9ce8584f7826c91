// The engine's page with the answers to what it asks: the policy decides about navigations, permissions are refused,
// windows are not opened, and what it writes to its console goes to the log "quenby.web.console" at debug level,
// without secrets.
//
// Threads: the main thread. The functions may be called from deep inside the engine: the page must not be destroyed
// while isAsking().
#pragma once

#include "platform/WebView.h"

#include <QWebEnginePage>

namespace quenby {

class EnginePage final : public QWebEnginePage {
    Q_OBJECT

public:
    EnginePage(QWebEngineProfile* profile, QObject* parent);

    void setNavigationPolicy(WebView::NavigationPolicy policy) { policy_ = std::move(policy); }
    bool isAsking() const { return isAsking_; }
    // The next navigation is the view's own page: nobody is asked.
    void expectOwnPage() { expectsOwnPage_ = true; }

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString& message, int lineNumber,
                                  const QString& sourceID) override;

private:
    WebView::NavigationPolicy policy_;
    bool isAsking_ = false;
    bool expectsOwnPage_ = false;
};

} // namespace quenby
