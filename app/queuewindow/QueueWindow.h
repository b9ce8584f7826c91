// The upload queue's window in the program: made when it is first wanted, filled from the queue, and what the user
// wants in it carried out.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "app/queuewindow/QueueListing.h"
#include "app/queuewindow/UploadRest.h"

#include <QObject>

#include <memory>

namespace quenby {

class FileBrowser;
class UploadQueueWindow;

class QueueWindow : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        UploadQueue& queue;
        UploadRest& rest;
        Defaults& defaults;
        FileBrowser& fileBrowser;
        std::shared_ptr<TimeSource> timeSource;
    };

    explicit QueueWindow(const Surroundings& surroundings);
    ~QueueWindow() override;

    void open();
    // Whether it was there to be minimised.
    bool minimize();

Q_SIGNALS:
    void filesDropped(const QList<QByteArray>& paths);

private:
    void make();
    void connectCommands();
    void showRest();

    const Surroundings surroundings_;
    QueueRows rows_;
    QueueListing listing_;
    std::unique_ptr<UploadQueueWindow> window_;
};

} // namespace quenby
