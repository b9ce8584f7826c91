// Carries out what the navigation policy says about the pages of one tab, and about the windows that they open.
//
// An engine asks from deep inside itself, so nothing is done within its question: what follows from a decision is told
// and done through the event loop.
#pragma once

#include "core/Endpoints.h"
#include "core/PageOpenRecord.h"
#include "core/TimeSource.h"
#include "platform/BrowserView.h"
#include "workspace/policy/NavigationPolicy.h"
#include "workspace/tab/HeldBack.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class DemoModel;
struct TabSurroundings;

// Threads: the main thread. The page and the model outlive it.
class TabNavigation final : public QObject {
    Q_OBJECT

public:
    TabNavigation(BrowserView& page, DemoModel& demoModel, const TabSurroundings& surroundings);

    // The tab's own wish, not the page's. Only page addresses.
    void load(const QUrl& url);
    // What the page that is there, or that comes, was first asked for as; empty: nothing was loaded.
    const QUrl& source() const { return mainFrame_.source; }

    // The user wants an address in a tab of its own, behind this one.
    void openInNewTab(const QUrl& url);
    // The user let go of the button over the page.
    void userActed() { windows_.forgive(); }
    // The user's answer to windowBlocked().
    void allowWindows() { windows_.allow(); }

Q_SIGNALS:
    void newTabRequested(const quenby::PageOpenRecord& page, bool isInBackground);
    void openOutsideRequested(const QUrl& url);
    void logOutRequested();
    void windowBlocked();
    // What the main frame wanted to go to does not come into this tab; it may come as a file.
    void stayed(bool isDownload);

private:
    // From the address that was first asked for to where redirects have led.
    struct Course {
        QUrl source = {};
        QUrl request = {};
        bool hasOpenedTab = false;
        bool isOver = false; // the page is there
    };

    WebNavigationPolicy decidePolicyForNavigationAction(const WebNavigation& navigation);
    PageDecision decide(const PageRequest& request) const;
    bool mayOpenTab(const WebNavigation& navigation, const Course& course) const;
    void createWebView(const WebWindowRequest& window);
    void openWindow(const WebWindowRequest& window);
    void leave(PageVerdict verdict, const PageRequest& page, bool isAsked);
    void open(const PageOpenRecord& record, bool isInBackground);
    // At once when the user asked for it, else as long as it does not go on without end.
    void unlessEndless(bool isAsked, const std::function<void()>& action);
    void later(std::function<void()> action);

    BrowserView& page_;
    DemoModel& demoModel_;
    const Endpoints endpoints_;
    const std::shared_ptr<TimeSource> timeSource_;
    const bool isPrintView_; // what the tab was opened for
    QUrl ownLoad_;
    Course mainFrame_;
    Course otherFrames_; // the engine does not say which of them
    HeldBack windows_;
};

} // namespace quenby
