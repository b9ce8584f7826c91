#include "platform/linux/web/engine/EngineBrowserView.h"

#include "platform/linux/web/engine/EngineDownload.h"
#include "platform/linux/web/engine/EnginePage.h"
#include "platform/linux/web/engine/PagePrinting.h"

#include <QIcon>
#include <QWebEngineContextMenuRequest>
#include <QWebEngineFindTextResult>
#include <QWebEngineFullScreenRequest>
#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <algorithm>

#include <csignal>

namespace quenby {
namespace {

using Action = QWebEnginePage::WebAction;

Action actionFor(WebCommand command) {
    switch (command) {
    case WebCommand::forward:
        return QWebEnginePage::Forward;
    case WebCommand::reload:
        return QWebEnginePage::Reload;
    case WebCommand::reloadFromOrigin:
        return QWebEnginePage::ReloadAndBypassCache;
    case WebCommand::cut:
        return QWebEnginePage::Cut;
    case WebCommand::copy:
        return QWebEnginePage::Copy;
    case WebCommand::paste:
        return QWebEnginePage::Paste;
    case WebCommand::pasteAsText:
        return QWebEnginePage::PasteAndMatchStyle;
    case WebCommand::selectAll:
        return QWebEnginePage::SelectAll;
    case WebCommand::undo:
        return QWebEnginePage::Undo;
    case WebCommand::redo:
        return QWebEnginePage::Redo;
    case WebCommand::copyImage:
        return QWebEnginePage::CopyImageToClipboard;
    case WebCommand::downloadLink:
        return QWebEnginePage::DownloadLinkToDisk;
    case WebCommand::downloadImage:
        return QWebEnginePage::DownloadImageToDisk;
    }
    return QWebEnginePage::NoWebAction;
}

WebWindowRequest::Place placeOf(const QWebEngineNewWindowRequest& request) {
    switch (request.destination()) {
    case QWebEngineNewWindowRequest::InNewTab:
        return WebWindowRequest::Place::tab;
    case QWebEngineNewWindowRequest::InNewBackgroundTab:
        return WebWindowRequest::Place::backgroundTab;
    case QWebEngineNewWindowRequest::InNewWindow:
    case QWebEngineNewWindowRequest::InNewDialog:
        return WebWindowRequest::Place::window;
    }
    return WebWindowRequest::Place::tab;
}

// The largest that the page offers, but no picture for a wall.
QImage imageOf(const QIcon& icon) {
    constexpr QSize enough(256, 256);
    QSize largest(0, 0);
    for (const QSize& size : icon.availableSizes())
        largest = size.width() > largest.width() ? size : largest;
    return largest.isEmpty() ? QImage() : icon.pixmap(largest.boundedTo(enough), 1.0).toImage();
}

} // namespace

EngineBrowserView::EngineBrowserView(std::shared_ptr<QWebEngineProfile> profile)
    : EngineView(std::move(profile)) {
    setUpPage();
    connectBrowsing();
}

void EngineBrowserView::setUpPage() {
    QWebEngineSettings& settings = *page().settings();
    settings.setAttribute(QWebEngineSettings::FullScreenSupportEnabled, true);
    settings.setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, true);
    // Drawn by the processor, each step of it would be felt.
    settings.setAttribute(QWebEngineSettings::ScrollAnimatorEnabled,
                          qgetenv("QT_QUICK_BACKEND") != QByteArrayLiteral("software"));
    pageWidget()->setContextMenuPolicy(Qt::CustomContextMenu);
    page().setConsole([this](const QString& message) { later([this, message] { Q_EMIT consoleMessage(message); }); });
}

void EngineBrowserView::connectBrowsing() {
    const auto* page = &this->page();
    connect(page, &QWebEnginePage::loadProgress, this,
            [this](int percent) { later([this, percent] { Q_EMIT progressChanged(percent); }); });
    connect(page, &QWebEnginePage::urlChanged, this, [this] {
        this->page().setZoomFactor(zoomFactor_); // the engine's own is the host's
        tellPlace();
    });
    connect(page, &QWebEnginePage::loadingChanged, this, &EngineBrowserView::tellPlace);
    connect(page, &QWebEnginePage::iconChanged, this,
            [this](const QIcon& icon) { later([this, image = imageOf(icon)] { Q_EMIT iconChanged(image); }); });
    connect(page, &QWebEnginePage::findTextFinished, this, [this](const QWebEngineFindTextResult& result) {
        later([this, result] { Q_EMIT found(result.activeMatch(), result.numberOfMatches()); });
    });
    connect(page, &QWebEnginePage::linkHovered, this,
            [this](const QString& url) { later([this, url = QUrl(url)] { Q_EMIT linkHovered(url); }); });
    connect(page, &QWebEnginePage::printRequested, this, [this] { later([this] { Q_EMIT printRequested(); }); });
    connect(page, &QWebEnginePage::lifecycleStateChanged, this, [this](QWebEnginePage::LifecycleState state) {
        if (state == QWebEnginePage::LifecycleState::Discarded)
            answerScripts();
    });
    connect(pageWidget(), &QWidget::customContextMenuRequested, this, &EngineBrowserView::tellContextMenu);
}

// --- Places ---------------------------------------------------------------------------------------------------------

void EngineBrowserView::tellPlace() {
    later([this] {
        const auto* history = page().history();
        const Place place{url(), history->canGoBack(), history->canGoForward()};
        if (place != std::exchange(toldPlace_, place))
            Q_EMIT historyChanged();
    });
}

void EngineBrowserView::windowWanted(const QWebEngineNewWindowRequest& request) {
    const WebWindowRequest wanted{request.requestedUrl(), placeOf(request), request.isUserInitiated()};
    later([this, wanted] { Q_EMIT windowRequested(wanted); });
}

void EngineBrowserView::fullScreenWanted(QWebEngineFullScreenRequest& request) {
    request.accept();
    later([this, isOn = request.toggleOn()] { Q_EMIT fullScreenRequested(isOn); });
}

// --- What its reader does with it -----------------------------------------------------------------------------------

void EngineBrowserView::perform(WebCommand command) {
    if (command == WebCommand::reload || command == WebCommand::reloadFromOrigin)
        page().dialogs().hearAgain();
    page().triggerAction(actionFor(command));
}

bool EngineBrowserView::canPerform(WebCommand command) const {
    return command == WebCommand::forward ? page().history()->canGoForward()
                                          : page().action(actionFor(command))->isEnabled();
}

void EngineBrowserView::find(const QString& text, bool backward) {
    page().findText(text, backward ? QWebEnginePage::FindBackward : QWebEnginePage::FindFlags());
}

void EngineBrowserView::setZoomFactor(qreal factor) {
    zoomFactor_ = std::clamp(factor, 0.25, 5.0);
    page().setZoomFactor(zoomFactor_);
}

void EngineBrowserView::tellContextMenu() {
    const QWebEngineContextMenuRequest* request = pageWidget()->lastContextMenuRequest();
    if (!request)
        return;
    const bool isImage = request->mediaType() == QWebEngineContextMenuRequest::MediaTypeImage;
    const WebContext context{pageWidget()->mapToGlobal(request->position()), request->linkUrl(),
                             isImage ? request->mediaUrl() : QUrl(), request->selectedText(),
                             request->isContentEditable()};
    later([this, context] { Q_EMIT contextMenuRequested(context); });
}

void EngineBrowserView::print() {
    if (!pageWidget())
        return;
    if (!printing_)
        printing_ = new PagePrinting(pageWidget());
    printing_->start();
}

// --- Files ----------------------------------------------------------------------------------------------------------

void EngineBrowserView::setDownloadHandler(DownloadHandler handler) {
    if (!handler)
        return page().setDownloadTaker({});
    page().setDownloadTaker(
        [handler = std::move(handler), profile = std::weak_ptr(profile())](QWebEngineDownloadRequest& request) {
            auto alive = profile.lock();
            if (!alive)
                return;
            const auto download = std::make_shared<EngineDownload>(request, std::move(alive));
            handler(download);
            download->dropUnlessBegun();
        });
}

void EngineBrowserView::download(const QUrl& url) { page().download(url); }

// --- The process ----------------------------------------------------------------------------------------------------

void EngineBrowserView::setLifecycle(WebLifecycle lifecycle) {
    if (page().isVisible())
        return;
    switch (lifecycle) {
    case WebLifecycle::active:
        return page().setLifecycleState(QWebEnginePage::LifecycleState::Active);
    case WebLifecycle::frozen:
        return page().setLifecycleState(QWebEnginePage::LifecycleState::Frozen);
    case WebLifecycle::discarded:
        return page().setLifecycleState(QWebEnginePage::LifecycleState::Discarded);
    }
}

WebLifecycle EngineBrowserView::lifecycle() const {
    switch (page().lifecycleState()) {
    case QWebEnginePage::LifecycleState::Frozen:
        return WebLifecycle::frozen;
    case QWebEnginePage::LifecycleState::Discarded:
        return WebLifecycle::discarded;
    default:
        return WebLifecycle::active;
    }
}

void EngineBrowserView::endProcess() {
    // Of the page's own process the engine tells; 0 is none, and as a target would be this program.
    const auto process = static_cast<pid_t>(page().renderProcessPid());
    if (process <= 0)
        return;
    page().dialogs().end(); // while one waits, the engine would not see it
    ::kill(process, SIGKILL);
}

} // namespace quenby
