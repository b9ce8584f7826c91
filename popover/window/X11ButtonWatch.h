// Hears of the mouse's left and right buttons wherever they are pressed on an X11 screen, also on the bare desktop and
// in other programs. It takes nothing away from whom they are meant for. On other systems it hears nothing.
//
// Threads: the main thread.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <cstdint>

namespace quenby {

class X11ButtonWatch final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    using QObject::QObject;
    ~X11ButtonWatch() override { stop(); }

    // While it is not started, it costs nothing. Both may be called twice.
    void start();
    void stop();

Q_SIGNALS:
    // Before the press or release arrives at any window. Where it was is not known: when the program was busy, the
    // pointer is somewhere else by now.
    void pressed();
    void released();
    // The press that pressed() told of arrives at one of this program's windows, or at an open menu of it, to which
    // presses beside it go as well.
    void arrived();

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    std::uint8_t extension_ = 0; // the server's number of it while the watch is started
};

} // namespace quenby
