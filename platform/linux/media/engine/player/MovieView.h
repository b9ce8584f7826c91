// Paints a movie's picture as large as fits, black around it. Threads: the main thread.
//
// By the painter, not by the toolkit's video widgets: these want a graphics library that a virtual or a plain display
// does not have.
#pragma once

#include "platform/linux/media/engine/player/MoviePicture.h"

#include <QWidget>

namespace quenby {

class MovieView final : public QWidget {
    Q_OBJECT

public:
    explicit MovieView(QWidget* parent = nullptr);

    void setPicture(const MoviePicture& picture);
    void clear();
    const MoviePicture& picture() const { return picture_; }
    // For pictures, in pixels of the screen.
    QSize room() const;
    QSize sizeHint() const override;

Q_SIGNALS:
    void roomChanged(QSize room);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool event(QEvent* event) override;

private:
    MoviePicture picture_;
};

} // namespace quenby
