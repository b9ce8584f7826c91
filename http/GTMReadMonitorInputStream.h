// Passes another stream on and tells of every piece that is read from it.
//
// Threads: read on one thread at a time, which need not be the creating one. The read selector is always called on the
// creating thread: at once, with a view of the reader's own buffer, when that is the reading thread; otherwise through
// the event loop with a copy, without waiting for it. It is not called after the read delegate has died.
#pragma once

#include "core/Mailbox.h"

#include <QByteArrayView>
#include <QIODevice>
#include <QPointer>

#include <functional>
#include <memory>

namespace quenby {

class GTMReadMonitorInputStream : public QIODevice {
    Q_OBJECT

public:
    using ReadSelector = std::function<void(QByteArrayView bytes)>;

    // The stream is open for reading and is used by nobody else from now on.
    static std::shared_ptr<GTMReadMonitorInputStream> inputStreamWithStream(std::shared_ptr<QIODevice> inputStream);
    explicit GTMReadMonitorInputStream(std::shared_ptr<QIODevice> inputStream);

    // Before the first read, on the creating thread, on which the delegate lives too.
    void setReadDelegate(QObject* readDelegate, ReadSelector readSelector);

    bool isSequential() const override { return inputStream_->isSequential(); }
    qint64 size() const override { return inputStream_->size(); }
    qint64 bytesAvailable() const override { return inputStream_->bytesAvailable(); }
    bool atEnd() const override { return inputStream_->atEnd(); }
    bool seek(qint64 position) override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    void tell(QByteArrayView bytes) const;

    std::shared_ptr<QIODevice> inputStream_;
    QPointer<QObject> readDelegate_; // looked at on the creating thread only
    ReadSelector readSelector_;
    std::shared_ptr<Mailbox> mailbox_; // of the delegate, for what is read on other threads
};

} // namespace quenby
