// One change: a picture, the file's title with its verb, and how long ago it was. While the pointer or the keyboard is
// on it, it is highlighted and shows a button to share the file.
//
// A row is told what to show; TableView tells it. Threads: the main thread. Sizes in logical pixels.
#pragma once

#include "core/ChangeRecord.h"
#include "popover/changes/RowLook.h"
#include "popover/changes/RowTexts.h"

#include <QImage>
#include <QPixmap>
#include <QStaticText>
#include <QWidget>

namespace quenby {

class ShareButton;
class SharePanel;

class TableRow : public QWidget {
    Q_OBJECT

public:
    explicit TableRow(QWidget* parent = nullptr);

    // Repaints only when it shows. Leaves the picture and the time to their own setters.
    void setRecord(const ChangeRecord& record);
    const ChangeRecord& record() const { return record_; }
    const RowTexts& texts() const { return texts_; }

    QString NameFile() const { return texts_.title(); }
    QString TimeChanges() const { return TimeChanges_; }
    void setTimeChanges(const QString& text);
    const QImage& IconFile() const { return IconFile_; }
    void setIconFile(const QImage& picture);
    QString shareString() const { return texts_.share; }
    QString type() const { return record_.mimeType; }
    ShareButton& shareButton() { return *shareButton_; }
    SharePanel& shareButtonView() { return *shareButtonView_; }

    void mouseEntered();
    void mouseExited();
    // Whether the keyboard is on the row and the user sees it: only who uses the keyboard does, until the row is
    // hidden.
    bool isMarked() const { return isMarked_; }
    // Takes the keyboard, and shows it.
    void takeKeyboard();

    // 0 to 1, for rows that come and go. Costs no layout of text.
    qreal opacity() const { return opacity_; }
    void setOpacity(qreal opacity);

Q_SIGNALS:
    void tookFocus();
    void clicked();
    void share();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setMarked(bool isMarked);
    void setHovered(bool isHovered);
    void layOut();
    void layOutTime();
    void takeColours();
    void updateShare();
    void updateSpoken();
    const QPixmap& scaledPicture();
    void paintPicture(QPainter& painter);

    ChangeRecord record_;
    RowTexts texts_;
    QString TimeChanges_;
    QImage IconFile_;
    SharePanel* shareButtonView_;
    ShareButton* shareButton_;
    RowFrames frames_;
    RowColours colours_;
    QStaticText titleLine_;
    QStaticText timeLine_;
    QFont titleFont_;
    QFont timeFont_;
    QPixmap scaled_; // of IconFile_, for the screen it was last painted on
    qreal opacity_ = 1;
    bool isTitleCut_ = false;
    bool isHovered_ = false;
    bool isMarked_ = false;
    bool isPressed_ = false;
};

} // namespace quenby
