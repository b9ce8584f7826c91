// A tab of the workspace: a page of the Drive's web application, with what a reader needs around it.
//
// It decides by the navigation policy what stays in the tab, what becomes another tab, and what leaves for the default
// browser; the program hears of the rest by signals. The engine's view is made when the tab is first looked at (or
// loaded), and its page is given up when nobody has looked at it for long: a tab costs nothing until then.
//
// Threads: the main thread. The views' maker, the model and the services outlive it.
#pragma once

#include "core/Endpoints.h"
#include "core/PageOpenRecord.h"
#include "core/TimeSource.h"
#include "platform/BrowserView.h"
#include "workspace/tab/WindowOpenLimit.h"

#include <QWidget>

#include <memory>

namespace quenby {

class DemoModel;

// What a tab stands on.
struct TabSurroundings {
    WebViews& webViews;
    WebViewProfile profile; // of the account whose pages these are
    Endpoints endpoints;
    std::shared_ptr<TimeSource> timeSource;
    QString documentsFolder; // where icons of pages are kept; empty: nowhere
    // Of what all tabs' pages begin together unasked: a page that opens itself in new tabs would multiply otherwise.
    std::shared_ptr<WindowOpenLimit> unaskedWindows = std::make_shared<WindowOpenLimit>(6);
};

class TabWebView final : public QWidget {
    Q_OBJECT

public:
    // The words about itself that a tab's pages are given.
    static QString userAgent();

    TabWebView(const TabSurroundings& surroundings, DemoModel& demoModel, QWidget* parent = nullptr);
    ~TabWebView() override;

    DemoModel& demoModel() const { return demoModel_; }
    // The engine's view; null while the tab has none.
    BrowserView* myWebview() const;

    // Loads the model's address, at once or, for a tab that nobody has looked at yet, when it is shown for the first
    // time.
    void loadNow();
    void loadWhenShown();
    // The main frame's address; the model's while nothing has been loaded.
    QUrl mainFrameURL() const;

    bool canGoBack() const;
    bool canGoForward() const;
    void stopLoading();
    void goBack();
    void goForward();
    void reloadFromOrigin();
    // Stops, and shows nothing more.
    void loadBlank();

    void showFind();
    void zoomIn();
    void zoomOut();
    void zoomReset();
    void print();
    // The user took the screen back from the page.
    void leaveFullScreen();

Q_SIGNALS:
    // Back and forward may have become possible or impossible.
    void navigationStateChanged();
    void newTabRequested(const quenby::PageOpenRecord& page, bool isInBackground);
    void openOutsideRequested(const QUrl& url);
    void logOutRequested();
    void downloadBegun(std::shared_ptr<quenby::WebDownload> download); // direct: begin() must be called within
    void fullScreenRequested(bool isOn);
    // By the page itself.
    void closeRequested();
    // The address under the pointer; empty: none.
    void linkHovered(const QUrl& url);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    class Private;
    DemoModel& demoModel_;
    std::unique_ptr<Private> d_;
};

} // namespace quenby
