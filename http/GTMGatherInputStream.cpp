#include "http/GTMGatherInputStream.h"

#include <algorithm>
#include <cstring>

namespace quenby {
namespace {

qint64 lengthOf(const GTMGatherInputStream::Piece& piece) {
    if (const auto* data = std::get_if<QByteArray>(&piece))
        return data->size();
    return std::get<std::shared_ptr<QIODevice>>(piece)->size();
}

} // namespace

std::shared_ptr<GTMGatherInputStream> GTMGatherInputStream::streamWithArray(const QList<QByteArray>& dataArray) {
    return std::make_shared<GTMGatherInputStream>(std::vector<Piece>(dataArray.begin(), dataArray.end()));
}

GTMGatherInputStream::GTMGatherInputStream(std::vector<Piece> pieces)
    : pieces_(std::move(pieces)) {
    qint64 end = 0;
    for (const Piece& piece : pieces_)
        ends_.push_back(end += lengthOf(piece));
    QIODevice::open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool GTMGatherInputStream::seek(qint64 position) {
    if (position > size() || !QIODevice::seek(position))
        return false;
    const auto piece = std::upper_bound(ends_.begin(), ends_.end(), position);
    arrayIndex_ = static_cast<size_t>(piece - ends_.begin());
    dataOffset_ = position - startOfPiece();
    return true;
}

qint64 GTMGatherInputStream::readData(char* data, qint64 maxSize) {
    qint64 total = 0;
    while (total < maxSize && arrayIndex_ < pieces_.size()) {
        const qint64 left = ends_[arrayIndex_] - startOfPiece() - dataOffset_;
        if (left == 0) {
            ++arrayIndex_;
            dataOffset_ = 0;
            continue;
        }
        const qint64 count = readPiece(data + total, std::min(left, maxSize - total));
        if (count < 0)
            return total > 0 ? total : -1; // a device that has failed once fails again at the next call
        dataOffset_ += count;
        total += count;
    }
    return total;
}

qint64 GTMGatherInputStream::readPiece(char* data, qint64 maxSize) {
    if (const auto* bytes = std::get_if<QByteArray>(&pieces_[arrayIndex_])) {
        std::memcpy(data, bytes->constData() + dataOffset_, static_cast<size_t>(maxSize));
        return maxSize;
    }
    QIODevice& device = *std::get<std::shared_ptr<QIODevice>>(pieces_[arrayIndex_]);
    const qint64 count = device.seek(dataOffset_) ? device.read(data, maxSize) : -1;
    if (count > 0)
        return count;
    setErrorString(count < 0 ? device.errorString()
                             : QStringLiteral("A part of the body ended before its announced length. Try again when "
                                              "nothing writes to it any more."));
    return -1;
}

} // namespace quenby
