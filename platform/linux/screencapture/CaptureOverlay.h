// The window that lies over all screens while a part of them is chosen: it shows the desktop's picture, and gives the
// user's input to the model. Only what changed is painted.
//
// It is one window over the whole desktop, in the display's own pixels, and not one of the toolkit's: those are placed
// and sized in points, which do not always hit a pixel where screens have fractions as their scales.
//
// Threads: the main thread.
#pragma once

#include "platform/linux/screencapture/CaptureScene.h"
#include "platform/linux/screencapture/InputGrab.h"
#include "platform/linux/screencapture/KeyTable.h"
#include "platform/linux/x11/XDisplay.h"

#include <QAbstractNativeEventFilter>
#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QTimer>

namespace quenby {

class CaptureOverlay final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    // The picture is of the whole desktop.
    CaptureOverlay(const XDisplay& display, const QImage& picture, const CaptureGround& ground);
    // Gives the pointer, the keyboard and the screen back.
    ~CaptureOverlay() override;

    // Takes the pointer and the keyboard, and comes up then.
    void open();

Q_SIGNALS:
    // One of them, once. A rectangle of the picture:
    void chosen(const QRect& rectangle);
    void cancelled();
    // The pointer and the keyboard cannot be had.
    void refused();

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void followPointer(uint16_t sequence, const QPoint& position);
    void handleButton(const xcb_button_press_event_t& event, bool isPress);
    void handleKey(const xcb_key_press_event_t& event, bool isPress);
    void afterInput();
    void warpPointer();
    void show();
    void schedulePainting();
    void paint();

    XDisplay display_;
    QImage picture_;
    CaptureSelection selection_;
    KeyTable keys_;
    xcb_window_t window_;
    xcb_gcontext_t context_;
    xcb_cursor_t cursor_;
    InputGrab grab_;
    bool isShown_ = false;
    bool hasTold_ = false;

    CaptureScene scene_; // as it is on the screen
    QRegion exposed_;    // what has to be painted besides what changes
    QTimer painting_;
    QElapsedTimer sincePainting_;

    QPoint realPointer_;                   // where the display has it
    std::optional<uint16_t> warpSequence_; // of the request that moved it, until an event from afterwards comes
};

} // namespace quenby
