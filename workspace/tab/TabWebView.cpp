#include "workspace/tab/TabWebView.h"

#include "workspace/tab/PageScripts.h"
#include "workspace/tab/TabParts.h"
#include "workspace/tab/ZoomSteps.h"
#include "workspace/tabbar/DemoModel.h"

#include <QApplication>
#include <QMenu>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace quenby {

TabWebView::Private::Private(TabWebView& tab, const TabSurroundings& tabSurroundings, DemoModel& demoModel)
    : q(tab)
    , model(demoModel)
    , surroundings(tabSurroundings)
    , notices(new TabNotices(&tab))
    , content(new QStackedWidget(&tab))
    , icons(surroundings.documentsFolder)
    , watch(surroundings.timeSource)
    , rest(surroundings.timeSource, [this](WebLifecycle lifecycle) {
        if (page)
            page->setLifecycle(lifecycle);
    }) {
    auto* layout = new QVBoxLayout(&tab);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(notices);
    layout->addWidget(content, 1);
    connect(notices, &TabNotices::chosen, this, &Private::noticeAnswered);
    connect(&watch, &PageWatch::notAnswering, this, &Private::pageDoesNotAnswer);
    connect(&watch, &PageWatch::answered, this, [this] { notices->withdraw(TabNotice::notAnswering); });
}

TabWebView::Private::~Private() = default;

// A page that nobody sees is not asked: it may be at rest, and does not answer then.
void TabWebView::Private::setShown(bool isShown) {
    if (isShown && std::exchange(waitsToBeShown, false))
        load(model.Taburl());
    if (!page)
        return;
    rest.setShown(isShown);
    if (isShown && hasShownPage) {
        watch.ask(*page);
    } else if (!isShown) {
        watch.forget();
        notices->withdraw(TabNotice::notAnswering);
    }
}

void TabWebView::Private::noticeAnswered(TabNoticeAction action) {
    switch (action) {
    case TabNoticeAction::allowWindows:
        return navigation->allowWindows();
    case TabNoticeAction::allowDownloads:
        return downloads->allow();
    case TabNoticeAction::openInBrowser:
        Q_EMIT q.openOutsideRequested(isPageAddress(navigation->source()) ? navigation->source() : model.Taburl());
        return;
    case TabNoticeAction::wait:
        return watch.waitOn();
    case TabNoticeAction::endPage:
        return page->endProcess();
    }
}

// Behind a message of its own a page waits for the user, not the other way round.
void TabWebView::Private::pageDoesNotAnswer() {
    if (QApplication::activeModalWidget())
        watch.waitOn();
    else
        notices->tell(TabNotice::notAnswering);
}

void TabWebView::Private::setZoomFactor(qreal factor) {
    page->setZoomFactor(factor);
    if (!zoomReadOut)
        zoomReadOut = new ZoomReadOut(surroundings.timeSource, content);
    zoomReadOut->tell(page->zoomFactor());
}

FindBar& TabWebView::Private::findBar() {
    if (!find) {
        find = new FindBar(&q);
        q.layout()->addWidget(find);
        connect(find, &FindBar::findRequested, this, [this](const QString& text, bool isBackward) {
            if (page)
                page->find(text, isBackward);
        });
        connect(find, &FindBar::closed, this, [this] { content->setFocus(); });
    }
    return *find;
}

// --- The tab --------------------------------------------------------------------------------------------------------

QString TabWebView::userAgent() {
    return QStringLiteral("Mozilla/5.0 (Macintosh; Intel Mac OS X 10_10_3) AppleWebKit/600.6.3 (KHTML, like Gecko) "
                          "Version/8.0.6 Safari/600.6.3");
}

TabWebView::TabWebView(const TabSurroundings& surroundings, DemoModel& demoModel, QWidget* parent)
    : QWidget(parent)
    , demoModel_(demoModel)
    , d_(std::make_unique<Private>(*this, surroundings, demoModel)) {}

TabWebView::~TabWebView() = default;

BrowserView* TabWebView::myWebview() const { return d_->page.get(); }

void TabWebView::loadNow() {
    d_->waitsToBeShown = false;
    d_->load(demoModel_.Taburl());
}

void TabWebView::loadWhenShown() {
    if (isVisible())
        loadNow();
    else
        d_->waitsToBeShown = true;
}

QUrl TabWebView::mainFrameURL() const {
    const QUrl url = d_->page ? d_->page->url() : QUrl();
    return url.isEmpty() ? demoModel_.Taburl() : url;
}

bool TabWebView::canGoBack() const { return d_->page && (d_->hasPageBehindProblem() || d_->page->canGoBack()); }

bool TabWebView::canGoForward() const { return d_->page && d_->page->canPerform(WebCommand::forward); }

void TabWebView::stopLoading() {
    if (d_->page)
        d_->page->stop();
    d_->refreshProcessing();
}

void TabWebView::goBack() {
    if (!d_->page)
        return;
    if (d_->hasPageBehindProblem())
        d_->returnToPage();
    else
        d_->page->back();
}

void TabWebView::goForward() {
    if (d_->page)
        d_->page->perform(WebCommand::forward);
}

void TabWebView::reloadFromOrigin() {
    if (!d_->page || d_->hasFailed)
        d_->tryAgain();
    else
        d_->page->perform(WebCommand::reloadFromOrigin);
}

void TabWebView::loadBlank() {
    d_->waitsToBeShown = false;
    d_->notices->withdrawAll();
    if (!d_->page)
        return;
    d_->page->stop();
    d_->load(QUrl(QStringLiteral("about:blank")));
}

void TabWebView::showFind() {
    if (d_->isPageSeen())
        d_->findBar().open();
}

void TabWebView::zoomIn() {
    if (d_->isPageSeen())
        d_->setZoomFactor(zoomedIn(d_->page->zoomFactor()));
}

void TabWebView::zoomOut() {
    if (d_->isPageSeen())
        d_->setZoomFactor(zoomedOut(d_->page->zoomFactor()));
}

void TabWebView::zoomReset() {
    if (d_->isPageSeen())
        d_->setZoomFactor(1);
}

void TabWebView::print() {
    if (d_->isPageSeen())
        d_->page->print();
}

void TabWebView::leaveFullScreen() {
    if (d_->page)
        quenby::leaveFullScreen(*d_->page, this);
}

void TabWebView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    d_->setShown(true);
}

void TabWebView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    d_->setShown(false);
}

} // namespace quenby
