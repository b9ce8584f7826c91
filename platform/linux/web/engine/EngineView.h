// What views on the engine's pages have in common, for WebView and for what is derived from it.
//
// Threads: the main thread. Everything but the navigation policy's question is told through the event loop, so that
// whoever hears it may destroy the view.
#pragma once

#include "platform/linux/web/WebEngineModule.h"

#include <QPointer>
#include <QStackedWidget>

#include <map>

class QWebEngineFullScreenRequest;
class QWebEngineLoadingInfo;
class QWebEngineNewWindowRequest;
class QWebEngineProfile;
class QWebEngineView;

namespace quenby {

class EnginePage;
class ProcessGoneMessage;

template <typename Interface>
class EngineView : public Interface {
public:
    using typename Interface::NavigationPolicy;
    using typename Interface::ScriptDone;

    explicit EngineView(std::shared_ptr<QWebEngineProfile> profile);
    ~EngineView() override;

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

    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    // Called from inside the engine.
    virtual void windowWanted(const QWebEngineNewWindowRequest& request) = 0;
    virtual void fullScreenWanted(QWebEngineFullScreenRequest& request) = 0;

    const std::shared_ptr<QWebEngineProfile>& profile() const { return profile_; }
    EnginePage& page() const { return *page_; }
    // Null when the widget is gone already.
    QWebEngineView* pageWidget() const { return view_; }
    void later(std::function<void()> function);
    // Those of a page that is gone: nobody else will.
    void answerScripts();

private:
    void connectPage();
    void loadingChanged(const QWebEngineLoadingInfo& info);
    void tellFinished();
    void tellRefusedLoad(const Error& error);
    void readTitle(bool tellsAlways);
    void showPage();
    void showProcessGone();

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
