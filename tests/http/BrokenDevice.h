// A device that gives only so many bytes of what its size promises, then fails or ends.
#pragma once

#include <QIODevice>

#include <algorithm>
#include <cstring>

namespace quenby::testing {

class BrokenDevice final : public QIODevice {
public:
    BrokenDevice(qint64 size, qint64 readable, bool fails)
        : size_(size)
        , readable_(readable)
        , fails_(fails) {
        open(ReadOnly | Unbuffered);
    }
    qint64 size() const override { return size_; }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        const qint64 count = std::min(maxSize, readable_ - pos());
        if (count <= 0) {
            setErrorString(QStringLiteral("the disk is gone"));
            return fails_ ? -1 : 0;
        }
        std::memset(data, 'x', static_cast<size_t>(count));
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 size_;
    qint64 readable_;
    bool fails_;
};

} // namespace quenby::testing
