// Reads a list of pieces as one stream. A piece is bytes in memory (shared, not copied) or a device, of which
// everything from its start to its size is read.
//
// Seekable, so that a retried request can be sent again; therefore the devices must be seekable and must not be used by
// anyone else meanwhile. A device that fails or ends before its size makes read() answer -1 with the reason in
// errorString(). Threads: one at a time.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QList>

#include <memory>
#include <variant>
#include <vector>

namespace quenby {

class GTMGatherInputStream final : public QIODevice {
    Q_OBJECT

public:
    using Piece = std::variant<QByteArray, std::shared_ptr<QIODevice>>;

    // Open for reading from the start.
    static std::shared_ptr<GTMGatherInputStream> streamWithArray(const QList<QByteArray>& dataArray);
    explicit GTMGatherInputStream(std::vector<Piece> pieces);

    qint64 size() const override { return ends_.empty() ? 0 : ends_.back(); }
    bool seek(qint64 position) override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 readPiece(char* data, qint64 maxSize);
    qint64 startOfPiece() const { return arrayIndex_ == 0 ? 0 : ends_[arrayIndex_ - 1]; }

    std::vector<Piece> pieces_;
    std::vector<qint64> ends_; // of each piece, within the stream
    size_t arrayIndex_ = 0;    // the piece that is read now
    qint64 dataOffset_ = 0;    // within that piece
};

} // namespace quenby
