// What the page in a tab tells, and what the tab makes of it.
#include "core/Redaction.h"
#include "workspace/tab/PageMenu.h"
#include "workspace/tab/PageScripts.h"
#include "workspace/tab/PageTitle.h"
#include "workspace/tab/TabLog.h"
#include "workspace/tab/TabParts.h"
#include "workspace/tabbar/DemoModel.h"

#include <QIcon>
#include <QMenu>
#include <QPixmap>

namespace quenby {

void TabWebView::Private::watchPage() {
    BrowserView* view = page.get();
    connect(view, &BrowserView::loadStarted, this, &Private::didStartProvisionalLoad);
    connect(view, &BrowserView::loadFinished, this, &Private::didFinishLoad);
    connect(view, &BrowserView::loadFailed, this, &Private::didFailLoad);
    connect(view, &BrowserView::titleChanged, this, &Private::didReceiveTitle);
    connect(view, &BrowserView::iconChanged, this, &Private::didReceiveIcon);
    connect(view, &BrowserView::progressChanged, this, &Private::refreshProcessing);
    connect(view, &BrowserView::consoleMessage, this, &consoleLog);
    connect(view, &BrowserView::processGone, this, &Private::processGone);
    connect(view, &BrowserView::leftButtonReleased, this, &Private::mouseDidRelease);
    connect(view, &BrowserView::contextMenuRequested, this, &Private::showMenu);
    connect(view, &BrowserView::printRequested, this, [this] {
        // A print view goes on in the tab that leads there as well, and would print there, too.
        if (q.isVisible() && prints.admits(surroundings.timeSource->elapsed()))
            page->print();
    });
    connect(view, &BrowserView::found, this, [this](int current, int total) {
        if (find)
            find->tellFound(current, total);
    });
    connect(view, &BrowserView::historyChanged, &q, &TabWebView::navigationStateChanged);
    connect(view, &BrowserView::fullScreenRequested, &q, &TabWebView::fullScreenRequested);
    connect(view, &BrowserView::closeRequested, &q, &TabWebView::closeRequested);
    connect(view, &BrowserView::linkHovered, &q, &TabWebView::linkHovered);

    connect(navigation.get(), &TabNavigation::newTabRequested, &q, &TabWebView::newTabRequested);
    connect(navigation.get(), &TabNavigation::openOutsideRequested, &q, &TabWebView::openOutsideRequested);
    connect(navigation.get(), &TabNavigation::logOutRequested, &q, &TabWebView::logOutRequested);
    connect(navigation.get(), &TabNavigation::windowBlocked, notices,
            [this] { notices->tell(TabNotice::windowBlocked); });
    connect(navigation.get(), &TabNavigation::stayed, this, &Private::stayed);

    connect(downloads.get(), &TabDownloads::downloadBegun, this, &Private::downloadDidBegin);
    connect(downloads.get(), &TabDownloads::downloadBlocked, notices,
            [this] { notices->tell(TabNotice::downloadBlocked); });
    connect(downloads.get(), &TabDownloads::runningChanged, this, &Private::refreshProcessing);
}

void TabWebView::Private::didStartProvisionalLoad() {
    hasFailed = false;
    watch.forget();
    notices->withdraw(TabNotice::notAnswering);
    notices->withdraw(TabNotice::refusal);
    if (find)
        find->forgetPlaces();
    showPage();
    refreshProcessing();
    hideDownloadDriveButton(*page, this);
}

void TabWebView::Private::didFinishLoad() {
    refreshProcessing();
    if (hasFailed)
        return; // the engine's own page about it
    hasShownPage = true;
    failed.clear();
    hideDownloadDriveButton(*page, this);
    if (isRefusalOfBrowser(page->url(), surroundings.endpoints))
        notices->tell(TabNotice::refusal);
}

void TabWebView::Private::didFailLoad(const Error& error) {
    hasFailed = true;
    failed = error.detail(errorKey::failingURL).toUrl();
    if (!isPageAddress(failed))
        failed = navigation->source();
    refreshProcessing();
    QString text = redaction::text(error.detail(errorKey::reason).toString());
    if (text.isEmpty())
        text = QStringLiteral("Check the network connection, and then try again.");
    if (const QString host = failed.host(); !text.contains(host))
        text += QLatin1Char('\n') + host;
    tellProblem(QStringLiteral("This page can't be loaded"), text, true);
    Q_EMIT q.navigationStateChanged();
}

void TabWebView::Private::didReceiveTitle(const QString& documentTitle) {
    hasShownPage = true;
    if (const QString title = pageTitle(documentTitle); !title.isEmpty())
        model.setTitle(title);
    hideDownloadDriveButton(*page, this);
}

void TabWebView::Private::didReceiveIcon(const QImage& icon) {
    icons.keep(icon);
    model.setIcon(icon.isNull() ? QIcon() : QIcon(QPixmap::fromImage(icon)));
}

// The engine says in the page's place what has happened. A page that filled the screen does not give it back itself.
void TabWebView::Private::processGone() {
    watch.forget();
    notices->withdraw(TabNotice::notAnswering);
    hasShownPage = true;
    showPage();
    refreshProcessing();
    Q_EMIT q.fullScreenRequested(false);
    Q_EMIT q.navigationStateChanged();
}

// A tab whose only address leads elsewhere has nothing to show, ever. One whose address leads to a file has done its
// work when the file comes.
void TabWebView::Private::stayed(bool isDownload) {
    refreshProcessing();
    if (!hasShownPage && !isDownload)
        Q_EMIT q.closeRequested();
}

void TabWebView::Private::downloadDidBegin(const std::shared_ptr<WebDownload>& download) {
    Q_EMIT q.downloadBegun(download);
    if (!hasShownPage)
        QMetaObject::invokeMethod(&q, &TabWebView::closeRequested, Qt::QueuedConnection);
}

void TabWebView::Private::mouseDidRelease() {
    navigation->userActed();
    downloads->userActed();
    prints.forgive();
    watch.ask(*page);
    Q_EMIT q.navigationStateChanged();
}

void TabWebView::Private::showMenu(const WebContext& context) {
    menu = makePageMenu(context, *page,
                        {.openInNewTab = [this](const QUrl& url) { navigation->openInNewTab(url); },
                         .download = [this](WebCommand command) { downloads->perform(command); }});
    menu->setParent(&q, menu->windowFlags()); // some desktops place no menu that belongs to nothing
    menu->popup(context.position);
}

} // namespace quenby
