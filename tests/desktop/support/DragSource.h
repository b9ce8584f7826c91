// A drag of files that comes from another program, as from a file manager: a small window of a process of its own, from
// which the real pointer drags.
//
// Threads: the main thread. The calls run the event loop while they wait, so that a window of this process can be the
// target; each gives up after DesktopInput::patience.
#pragma once

#include "tests/desktop/support/DesktopInput.h"

#include <QByteArray>
#include <QList>
#include <QProcess>

#include <optional>

namespace quenby::testing {

class DragSource {
public:
    // Absolute paths, as bytes; they need not exist. The window stands at this place of the screen, above all others.
    explicit DragSource(const QList<QByteArray>& paths, const QPoint& place = {20, 560});
    ~DragSource();
    DragSource(const DragSource&) = delete;
    DragSource& operator=(const DragSource&) = delete;

    // Shows the window, presses the button on it and moves until the drag has begun. False when it does not begin.
    bool begin();
    void moveTo(const QPoint& position);
    // Waits until what is under the pointer takes the drag, or, with false, refuses it again.
    bool waitForAcceptance(bool isAccepted = true);
    // Lets go. What the target did with the files; nothing when the drag does not end.
    std::optional<Qt::DropAction> drop();
    // Escape instead.
    std::optional<Qt::DropAction> cancel();

    // begin(), a move to the position, acceptance and drop(): whether the files were taken.
    bool dropAt(const QPoint& position);

private:
    bool waitForLine(const QByteArray& line);
    std::optional<Qt::DropAction> waitForEnd();
    void read();

    const QList<QByteArray> paths_;
    const QPoint place_;
    DesktopInput input_;
    QProcess process_;
    QList<QByteArray> lines_; // what the source has told so far
    bool isAccepted_ = false;
    bool isPressed_ = false;
};

} // namespace quenby::testing
