// The borderless window in which a page's dialog is shown: as high as the dialog, and gone when the dialog is.
//
// It sees each key before the page does: Escape dismisses it, and after any other key the dialog is measured again.
#pragma once

#include "core/TimeSource.h"
#include "platform/WebView.h"

#include <QPointer>
#include <QWidget>

class QPropertyAnimation;

namespace quenby {

// Threads: the main thread.
class ctmWindow : public QWidget {
    Q_OBJECT

public:
    explicit ctmWindow(std::shared_ptr<TimeSource> timeSource);
    ~ctmWindow() override;

    // The page and what covers it while it loads. They may go away at any time.
    void setWebView(WebView* webView);
    void setProgressIndicator(QWidget* progressIndicator);

    // Measures the page's dialog and fits the window to it, or dismisses the window when the dialog has gone.
    void measure();
    // Fits the window to a dialog of this height, an integer in a text; no text counts as 0. At 0 the window is
    // dismissed.
    void selfClosesizeChange(WebView* webView, const QString& andheight);
    // Fits the window to a dialog of so many pixels; nothing happens unless it is above 0.
    void fitHeight(int dialogHeight);

    // Fades the window out and takes it off the screen; five seconds later its page is emptied, so that it stops, and
    // after one more second removeShareWindow() follows.
    void dismiss();
    bool isDismissed() const { return isDismissed_; }

Q_SIGNALS:
    void removeShareWindow();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void handleKey(int key);
    bool isPageLoading() const;

    const std::shared_ptr<TimeSource> timeSource_;
    QPointer<WebView> webView_;
    QPointer<QWidget> progressIndicator_;
    QPropertyAnimation* moving_;
    QPropertyAnimation* fading_;
    std::unique_ptr<Timer> orderingOut_;
    std::unique_ptr<Timer> emptying_;
    std::unique_ptr<Timer> removing_;
    bool isDismissed_ = false;
};

} // namespace quenby
