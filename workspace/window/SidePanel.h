// Beside the page: whose Drive it is, and what comes and goes. It scrolls when it is higher than the window.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

class QVBoxLayout;

namespace quenby {

class AccountView;

class SidePanel final : public QWidget {
    Q_OBJECT

public:
    explicit SidePanel(QWidget* parent = nullptr);

    static constexpr int smallestWidth = 260;
    static constexpr int usualWidth = 320;
    static constexpr int largestWidth = 480;

    AccountView& accountView() const { return *accountView_; }
    // Below the uploads. Takes it over.
    void setDownloadsView(QWidget* view);
    // Over the page and not beside it: there is no splitter then to part them.
    void setOverPage(bool isOver);

Q_SIGNALS:
    void closeRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    AccountView* accountView_;
    QVBoxLayout* content_;
    bool isOverPage_ = false;
};

} // namespace quenby
