// One saving of a recording, from the chosen place to the answered alert. It outlives the window that began it.
//
// Threads: the main thread; the copy is made on another one. It belongs to the application and deletes itself when
// there is nothing more to do. When the program quits before, the copy stops and leaves nothing.
#pragma once

#include "recording/review/MovieCopy.h"

#include <QObject>

#include <memory>

namespace quenby {

class Alerts;
class FileBrowser;

class MovieSaving final : public QObject {
    Q_OBJECT

public:
    // The services outlive the application's event loop.
    static MovieSaving* start(const QByteArray& movie, const QByteArray& destination, Alerts& alerts,
                              FileBrowser& fileBrowser);
    ~MovieSaving() override;

Q_SIGNALS:
    // Before the alert is shown; none is when the movie was gone.
    void copyEnded(quenby::MovieCopyResult::End end);

private:
    MovieSaving(const QByteArray& movie, const QByteArray& destination, Alerts& alerts, FileBrowser& fileBrowser);

    void copy();
    void ended(const MovieCopyResult& result);
    void offerToReveal();
    void reveal();

    const QByteArray movie_;
    const QByteArray destination_;
    Alerts& alerts_;
    FileBrowser& fileBrowser_;
    const std::shared_ptr<std::atomic_bool> isStopped_; // the other thread's too
};

} // namespace quenby
