// What a tab consists of, and how its parts hear of one another.
#pragma once

#include "workspace/tab/FindBar.h"
#include "workspace/tab/IconFile.h"
#include "workspace/tab/PageWatch.h"
#include "workspace/tab/TabDownloads.h"
#include "workspace/tab/TabNavigation.h"
#include "workspace/tab/TabNotices.h"
#include "workspace/tab/TabRest.h"
#include "workspace/tab/TabWebView.h"
#include "workspace/tab/ZoomReadOut.h"

class QMenu;
class QStackedWidget;

namespace quenby {

class ProblemPane;

class TabWebView::Private final : public QObject {
public:
    Private(TabWebView& tab, const TabSurroundings& tabSurroundings, DemoModel& demoModel);
    ~Private() override;

    // --- Loading (TabLoading.cpp) ---------------------------------------------------------------------------------
    void load(const QUrl& url);
    void tryAgain();
    bool makePage();
    void tellProblem(const QString& heading, const QString& text, bool canTryAgain);
    void showPage();
    bool isPageSeen() const;
    // What could not be loaded has left the page alone that was there.
    bool hasPageBehindProblem() const;
    void returnToPage();
    void refreshProcessing();

    // --- What the page tells (TabPageEvents.cpp) ------------------------------------------------------------------
    void watchPage();
    void didStartProvisionalLoad();
    void didFinishLoad();
    void didFailLoad(const Error& error);
    void didReceiveTitle(const QString& documentTitle);
    void didReceiveIcon(const QImage& icon);
    void processGone();
    void stayed(bool isDownload);
    void downloadDidBegin(const std::shared_ptr<WebDownload>& download);
    void mouseDidRelease();
    void showMenu(const WebContext& context);

    // --- The rest (TabWebView.cpp) --------------------------------------------------------------------------------
    void setShown(bool isShown);
    void noticeAnswered(TabNoticeAction action);
    void pageDoesNotAnswer();
    void setZoomFactor(qreal factor);
    FindBar& findBar();

    TabWebView& q;
    DemoModel& model;
    const TabSurroundings surroundings;

    TabNotices* const notices;
    QStackedWidget* const content; // the page, or what is the matter with it
    ProblemPane* problem = nullptr;
    FindBar* find = nullptr;
    ZoomReadOut* zoomReadOut = nullptr;

    IconKeeper icons;
    PageWatch watch;
    // Below the widgets, because it must go before the widget that it is shown in; above what speaks with it.
    std::unique_ptr<BrowserView> page;
    std::unique_ptr<TabNavigation> navigation;
    std::unique_ptr<TabDownloads> downloads;
    TabRest rest;
    std::unique_ptr<QMenu> menu;

    QUrl failed;                 // what could not be loaded
    WindowOpenLimit prints{2};   // that the page itself asks for
    bool waitsToBeShown = false; // for the first time, to load
    bool hasShownPage = false;   // some part of one
    bool hasFailed = false;      // since the page began to load
};

} // namespace quenby
