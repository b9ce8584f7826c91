// A picture to drop files on. Files dropped here are uploaded to the top of the Drive.
//
// Threads: the main thread. It takes a drag that holds at least one regular file, and then hands on all that was
// dropped, folders included. Whether anybody is signed in is not asked here.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QWidget>

namespace quenby {

class dragFileImageView : public QWidget {
    Q_OBJECT

public:
    explicit dragFileImageView(QWidget* parent = nullptr);

    // What shows through behind the picture: light grey while files that would be taken are over it, else nothing.
    QColor backgroundColour() const { return backgroundColour_; }

    QSize sizeHint() const override { return {320, 140}; }
    QSize minimumSizeHint() const override { return {160, 80}; }

Q_SIGNALS:
    // Files are being dragged over the picture: time to bring the workspace window to the front.
    void raiseRequested();
    // Absolute paths, as bytes.
    void filesDropped(const QList<QByteArray>& paths);

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setBackgroundColour(const QColor& colour);

    QColor backgroundColour_ = Qt::transparent;
};

} // namespace quenby
