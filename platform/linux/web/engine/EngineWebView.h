// The view on one page of the engine.
//
// Threads: the main thread. Everything but the navigation policy's question is told through the event loop, so that
// whoever hears it may destroy the view.
#pragma once

#include "platform/linux/web/WebEngineModule.h"

#include <QPointer>
#include <QStackedWidget>

#include <map>

class QWebEngineLoadingInfo;
class QWebEngineProfile;
class QWebEngineView;

namespace quenby {

class EnginePage;
class ProcessGoneMessage;

class EngineWebView final : public WebView {
    Q_OBJECT

public:
    explicit EngineWebView(std::shared_ptr<QWebEngineProfile> profile);
    ~EngineWebView() override;

    QWidget* widget() override { return stack_; }
    void load(const QUrl& url) override;
    void setHtml(const QString& html, const QUrl& base) override;
    void stop() override;
    void back() override;
    void evaluate(const QString& script, QObject* context, ScriptDone done) override;
    void setNavigationPolicy(NavigationPolicy policy) override;
    QUrl url() const override;
    bool isLoading() const override { return isLoading_; }
    bool canGoBack() const override;

    const std::shared_ptr<QWebEngineProfile>& profile() const { return profile_; }
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void connectPage();
    void loadingChanged(const QWebEngineLoadingInfo& info);
    void tellFinished();
    void tellRefusedLoad(const Error& error);
    void readTitle(bool tellsAlways);
    void showPage();
    void showProcessGone();
    void later(std::function<void()> function);
    void answerScripts();

    const std::shared_ptr<QWebEngineProfile> profile_;
    const QPointer<QStackedWidget> stack_;
    QPointer<EnginePage> page_;
    const QPointer<QWebEngineView> view_;
    ProcessGoneMessage* processGoneMessage_ = nullptr; // made when it is first needed
    bool isLoading_ = false;
    QUrl url_; // what was last asked for, until the page has an address of its own
    QString title_;
    quint64 lastScript_ = 0;
    std::map<quint64, CompletionGate<const QVariant&>> waitingScripts_;
};

} // namespace quenby
