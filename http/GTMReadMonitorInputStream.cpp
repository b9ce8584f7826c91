#include "http/GTMReadMonitorInputStream.h"

#include <QThread>

namespace quenby {

std::shared_ptr<GTMReadMonitorInputStream>
GTMReadMonitorInputStream::inputStreamWithStream(std::shared_ptr<QIODevice> inputStream) {
    return std::make_shared<GTMReadMonitorInputStream>(std::move(inputStream));
}

GTMReadMonitorInputStream::GTMReadMonitorInputStream(std::shared_ptr<QIODevice> inputStream)
    : inputStream_(std::move(inputStream)) {
    QIODevice::open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    if (!isSequential())
        QIODevice::seek(inputStream_->pos());
}

void GTMReadMonitorInputStream::setReadDelegate(QObject* readDelegate, ReadSelector readSelector) {
    readDelegate_ = readDelegate;
    readSelector_ = std::move(readSelector);
    mailbox_ = readDelegate && readSelector_ ? Mailbox::forContext(readDelegate) : nullptr;
}

bool GTMReadMonitorInputStream::seek(qint64 position) {
    return inputStream_->seek(position) && QIODevice::seek(position);
}

qint64 GTMReadMonitorInputStream::readData(char* data, qint64 maxSize) {
    const qint64 count = inputStream_->read(data, maxSize);
    if (count < 0)
        setErrorString(inputStream_->errorString());
    else if (count > 0 && mailbox_)
        tell(QByteArrayView(data, count));
    return count;
}

void GTMReadMonitorInputStream::tell(QByteArrayView bytes) const {
    if (QThread::currentThread() != thread())
        mailbox_->post([selector = readSelector_, copy = bytes.toByteArray()] { selector(copy); });
    else if (readDelegate_)
        readSelector_(bytes);
}

} // namespace quenby
