#include "workspace/tab/TabNavigation.h"

#include "workspace/policy/TabTitles.h"
#include "workspace/tab/PageScripts.h"
#include "workspace/tab/TabWebView.h"
#include "workspace/tabbar/DemoModel.h"

namespace quenby {
namespace {

using Kind = WebNavigation::Kind;

// Addresses that are no page's, and that people click on all the same.
bool belongsToAnotherProgram(const QUrl& url) {
    return url.scheme() == QLatin1String("mailto") || url.scheme() == QLatin1String("tel");
}

} // namespace

TabNavigation::TabNavigation(BrowserView& page, DemoModel& demoModel, const TabSurroundings& surroundings)
    : page_(page)
    , demoModel_(demoModel)
    , endpoints_(surroundings.endpoints)
    , timeSource_(surroundings.timeSource)
    , isPrintView_(demoModel.title() == QLatin1String(printTabTitle))
    , windows_(3, surroundings.unaskedWindows) {
    page_.setNavigationPolicy([self = QPointer(this)](const WebNavigation& navigation) {
        return self ? self->decidePolicyForNavigationAction(navigation) : WebNavigationPolicy::ignore;
    });
    connect(&page_, &BrowserView::windowRequested, this, &TabNavigation::createWebView);
    connect(&page_, &BrowserView::loadFinished, this, [this] { mainFrame_.isOver = !page_.isLoading(); });
}

void TabNavigation::load(const QUrl& url) {
    windows_.forgive();
    ownLoad_ = url;
    page_.load(url);
}

// --- In this tab ----------------------------------------------------------------------------------------------------

// Redirects keep the source of what they come from; when that is there as a page, it is the page that redirects, which
// is like any other wish of a page. In frames it is the source of the last frame that was let through, which is as good
// as the right one: it has passed every rule about sources.
WebNavigationPolicy TabNavigation::decidePolicyForNavigationAction(const WebNavigation& navigation) {
    hideDownloadDriveButton(page_, this);
    Course& course = navigation.isMainFrame ? mainFrame_ : otherFrames_;
    const bool goesOn = navigation.kind == Kind::redirect && !course.source.isEmpty() && !course.isOver;
    Course next = goesOn ? course : Course{.source = navigation.url};
    next.request = navigation.url;

    const PageRequest page{next.source, next.request, navigation.isMainFrame, demoModel_.title()};
    const PageDecision decision = decide(page);
    // An engine takes what scripts do for clicks; the user's real ones are known by userActed().
    const bool isAsked = navigation.kind == Kind::typed;
    if (decision.newTab && mayOpenTab(navigation, next)) {
        next.hasOpenedTab = true;
        unlessEndless(isAsked, [this, record = *decision.newTab] { open(record, false); });
    }
    if (decision.verdict == PageVerdict::use) {
        course = next;
        return WebNavigationPolicy::use;
    }
    leave(decision.verdict, page, isAsked);
    if (navigation.isMainFrame)
        later([this, verdict = decision.verdict] { Q_EMIT stayed(verdict == PageVerdict::download); });
    return WebNavigationPolicy::ignore;
}

// The rule about types of content knows nothing but the address, so that it can be asked before the answer is there.
PageDecision TabNavigation::decide(const PageRequest& page) const {
    PageDecision decision = quenby::decidePolicyForNavigationAction(page, endpoints_);
    if (decision.verdict == PageVerdict::use &&
        decidePolicyForMIMEType(page.request, endpoints_) == PageVerdict::download)
        decision = {.verdict = PageVerdict::download};
    if (decision.verdict == PageVerdict::ignore && belongsToAnotherProgram(page.request))
        decision.verdict = PageVerdict::openOutside;
    return decision;
}

// One tab for one wish of the page. A page that is loaded again was opened before, in this run or the last one; and a
// tab that is a print view does not open more of them, whatever its page calls itself by now.
bool TabNavigation::mayOpenTab(const WebNavigation& navigation, const Course& course) const {
    const bool isOwn = navigation.kind == Kind::typed && navigation.url == ownLoad_;
    const bool isAgain = navigation.kind == Kind::reload || navigation.kind == Kind::backForward ||
                         (navigation.isMainFrame && navigation.url == mainFrame_.request);
    return !isPrintView_ && !course.hasOpenedTab && !isOwn && !isAgain;
}

void TabNavigation::leave(PageVerdict verdict, const PageRequest& page, bool isAsked) {
    switch (verdict) {
    case PageVerdict::download:
        return later([this, url = page.request] { page_.download(url); });
    case PageVerdict::openOutside:
        return unlessEndless(isAsked, [this, url = page.source] { Q_EMIT openOutsideRequested(url); });
    case PageVerdict::logOut:
        return later([this] { Q_EMIT logOutRequested(); });
    case PageVerdict::use:
    case PageVerdict::ignore:
    case PageVerdict::undecided:
        return;
    }
}

// --- Windows --------------------------------------------------------------------------------------------------------

void TabNavigation::createWebView(const WebWindowRequest& window) {
    const bool isPage = isPageAddress(window.url) && window.url.scheme() != QLatin1String("about");
    // A window that its script fills is not to be had.
    if (isPage || belongsToAnotherProgram(window.url))
        unlessEndless(window.isUserInitiated, [this, window] { openWindow(window); });
}

void TabNavigation::openWindow(const WebWindowRequest& window) {
    if (belongsToAnotherProgram(window.url)) {
        Q_EMIT openOutsideRequested(window.url);
        return;
    }
    if (window.place == WebWindowRequest::Place::backgroundTab)
        return openInNewTab(window.url);
    // An engine takes most windows of scripts for tabs; those that nobody clicked for are no links.
    if (window.place == WebWindowRequest::Place::window || !window.isUserInitiated) {
        page_.stop();
        demoModel_.setProcessing(false);
        return open(createWebViewWithRequest(window.url), false);
    }
    const PageDecision decision = decidePolicyForNewWindowAction(window.url, endpoints_);
    if (decision.verdict == PageVerdict::use) {
        ownLoad_.clear();
        page_.load(window.url); // which asks about the address once more
    } else if (decision.newTab) {
        open(*decision.newTab, false);
    } else {
        leave(decision.verdict, {window.url, window.url, true, demoModel_.title()}, true);
    }
}

void TabNavigation::openInNewTab(const QUrl& url) {
    const PageRequest page{url, url, true, demoModel_.title()};
    const PageDecision decision = decide(page);
    if (decision.verdict != PageVerdict::use)
        return leave(decision.verdict, page, true);
    // The policy's titles are better than none; the page will tell its own.
    const auto titled = decision.newTab ? decision.newTab : decidePolicyForNewWindowAction(url, endpoints_).newTab;
    open(titled.value_or(PageOpenRecord{.title = url.host(), .url = url}), true);
}

void TabNavigation::open(const PageOpenRecord& record, bool isInBackground) {
    if (isPageAddress(record.url))
        Q_EMIT newTabRequested(record, isInBackground);
}

void TabNavigation::unlessEndless(bool isAsked, const std::function<void()>& action) {
    const auto inTime = [this, action] { later(action); };
    if (isAsked || windows_.admits(timeSource_->elapsed(), inTime))
        inTime();
    else
        later([this] { Q_EMIT windowBlocked(); });
}

void TabNavigation::later(std::function<void()> action) {
    QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
}

} // namespace quenby
