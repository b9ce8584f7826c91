// Pointer, keyboard and windows of the virtual desktop, by xdotool: the events are the display's own, and take the same
// road as those of a person.
//
// Positions and sizes are pixels of the screen; a window of this process has its own by mapToGlobal(), times its device
// pixel ratio. Events arrive when the event loop runs: the calls run it while they wait for xdotool, and a test waits
// for the effect with QTRY_*.
//
// Threads: the main thread.
#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

namespace quenby::testing {

// 0 is no window.
using WindowId = quint32;

class DesktopInput {
public:
    static constexpr int patience = 30'000; // milliseconds

    enum Button { left = 1, middle = 2, right = 3 };

    // Ends the test program outside of a virtual desktop: nobody's own desktop gets events from a test.
    DesktopInput();

    void moveTo(const QPoint& position);
    void press(Button button = left);
    void release(Button button = left);
    void click(const QPoint& position, Button button = left);
    void doubleClick(const QPoint& position);

    // A key or chord by xdotool's names, such as "Escape", "ctrl+a" or "Return". It goes where the focus is.
    void key(const QString& chord);
    // ASCII alone: for other characters the keyboard's map would have to change on the way.
    void type(const QString& text);

    // The visible window with exactly this title, with or without the program's name after it, of this process when one
    // is given.
    WindowId find(const QString& title, qint64 pid = 0);
    QList<WindowId> findAll(const QString& title, qint64 pid = 0);
    // Waits for it; 0 when it does not come.
    WindowId waitForWindow(const QString& title, qint64 pid = 0);
    // False when it stays.
    bool waitUntilGone(WindowId window);
    bool isVisible(WindowId window);
    // Where the window's contents are, without what the window manager puts around them; empty when it is gone.
    QRect geometry(WindowId window);
    // A window that stands on another one, such as an alert on the window that it is about.
    bool isDialog(WindowId window);
    // What stands on the screen itself: frames, panels, and menus and other windows without a frame.
    QList<WindowId> topWindows();
    // Gives it the focus, and waits until it has it. False when it does not get it.
    bool activate(WindowId window);
    // The same, without asking the window manager: for a window that keeps the keyboard to itself.
    void focus(WindowId window);

    // The whole screen as a PNG file.
    bool savePicture(const QString& path);
    // For a test's cleanup(): a picture of the desktop under build/<preset>/failures/ when the test function failed.
    void savePictureOfFailure();

private:
    struct Answer {
        bool isGood = false;
        QString output;
    };
    static Answer run(const QString& program, const QStringList& arguments);
    static void clickRepeatedly(const QPoint& position, int times);
    static Answer xdotool(const QStringList& arguments);
};

} // namespace quenby::testing
