// A window of panes, one of which is seen below the toolbar. The window is as high as that pane wants it, and goes to
// another height with its top edge at rest; its width is that of the widest pane.
//
// Threads: the main thread.
#pragma once

#include <QPainterPath>
#include <QVariantAnimation>
#include <QWidget>

class QScrollArea;

namespace quenby {

class PaneBar;

class PreferenceWindow final : public QWidget {
    Q_OBJECT

public:
    struct Pane {
        QString name;
        QPainterPath glyph;
        QWidget* view; // without a parent; the window becomes its owner
        int height;    // of the whole window, toolbar included, in logical pixels; more when the view needs more
    };

    PreferenceWindow();

    // They count from 0. None is seen before showPane().
    void addPane(const Pane& pane);
    void showPane(int index);
    // At once.
    void fitToPane();
    // In the middle of the screen on which the user is; before the window is shown. Not every desktop lets it.
    void moveToMiddle();

Q_SIGNALS:
    // By the user or by the program.
    void closed();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    struct Room {
        QScrollArea* area; // for a view that needs more than the screen has
        int height;
    };

    void turnTo(int index);
    void goToPane();
    void setHeight(int height);
    void layOut();
    int neededHeight() const; // by the pane that is seen
    int heightOfPane() const; // as far as the screen reaches
    int widthOfPanes() const;

    PaneBar* const bar_;
    QList<Room> rooms_;
    QVariantAnimation animation_; // of the height
};

} // namespace quenby
