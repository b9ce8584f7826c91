// Part of an open file as a device of its own: the bytes from an offset on, and so many. Nothing is buffered and
// nothing else is read; the file's own position is neither used nor moved, so that several windows of one file can be
// read side by side.
//
// Errors: a file that has become shorter than the window, was closed or cannot be read makes read() answer -1 with
// the reason in errorString(). It is never taken for the window's end.
//
// Threads: one at a time; the file is only read through its descriptor.
#pragma once

#include <QFile>
#include <QIODevice>

#include <memory>

namespace quenby {

class FileWindowDevice final : public QIODevice {
    Q_OBJECT

public:
    // Open for reading from the start. Offset and length are in bytes and not negative.
    FileWindowDevice(std::shared_ptr<QFile> file, qint64 offset, qint64 length);

    qint64 size() const override { return length_; }
    bool seek(qint64 position) override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    std::shared_ptr<QFile> file_;
    qint64 offset_;
    qint64 length_;
    qint64 position_ = 0; // within the window
};

} // namespace quenby
