// An application that knows what is painted, and when a frame is finished.
//
// Threads: the main thread.
#pragma once

#include <QApplication>
#include <QEventLoop>

#include <chrono>
#include <functional>

namespace quenby::bench {

class PaintWatch final : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override;

    // Widgets that were painted, each time counted.
    int paintCount() const { return paintCount_; }
    // Called when the event is over in which something was painted: the toolkit has handed all of it to the screen
    // then.
    std::function<void()> frameEnded;

    // Runs the event loop until the condition holds, which is looked at after each event. Ends the program with an
    // error, which says what was awaited, when that never comes.
    void waitUntil(const char* awaited, std::function<bool()> condition);
    // The same for what no event tells of.
    void askUntil(const char* awaited, std::function<bool()> condition);
    void rest(std::chrono::milliseconds time);

private:
    int depth_ = 0; // of events inside of events
    int paintCount_ = 0;
    bool isFrame_ = false; // comes of the event that is being handled
    std::function<bool()> awaited_;
    QEventLoop* awaiting_ = nullptr; // the loop that ends with that
};

} // namespace quenby::bench
