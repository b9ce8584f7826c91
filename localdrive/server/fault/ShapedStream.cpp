#include "localdrive/server/fault/ShapedStream.h"

#include <algorithm>
#include <limits>

namespace quenby::localdrive {
namespace {

using Phase = FaultPoint::Phase;
using namespace std::chrono_literals;

// A drip is sent in so many pieces a second, at least one byte each.
constexpr qint64 dripsPerSecond = 20;

} // namespace

ShapedStream::ShapedStream(ClientConnection& connection, const RequestFacts& request, const FaultAction& action)
    : connection_(connection)
    , headLength_(request.headLength)
    , holdsBack_(action.rewritesReply())
    , bytesPerSecond_(action.dripBytesPerSecond) {
    if (action.stall)
        cuts_.push_back({action.stall->point, Kind::stall, action.stall->duration});
    if (action.drop)
        cuts_.push_back({*action.drop, Kind::drop, 0ms});
    if (action.reset)
        cuts_.push_back({*action.reset, Kind::reset, 0ms});
}

bool ShapedStream::begin() { return strike(Phase::before, 0); }

bool ShapedStream::send(QByteArrayView bytes) {
    // A cut behind the last byte of the request strikes before the reply begins.
    if (sent_ == 0 && (!strike(Phase::requestBytes, read_ - headLength_) || !strike(Phase::responseBytes, 0)))
        return false;
    while (!bytes.isEmpty()) {
        const qint64 size = std::min<qint64>(bytes.size(), untilCut(Phase::responseBytes, sent_));
        if (!sendPiece(bytes.first(size)))
            return false;
        sent_ += size;
        bytes = bytes.sliced(size);
        if (!strike(Phase::responseBytes, sent_))
            return false;
    }
    return true;
}

bool ShapedStream::sendPiece(QByteArrayView bytes) {
    const qint64 most = bytesPerSecond_ ? std::max<qint64>(1, *bytesPerSecond_ / dripsPerSecond) : bytes.size();
    while (!bytes.isEmpty()) {
        const qint64 size = std::min<qint64>(most, bytes.size());
        if (connection_.write(bytes.data(), static_cast<size_t>(size)) < 0)
            return false;
        bytes = bytes.sliced(size);
        if (bytesPerSecond_ && !connection_.pause(1000ms * size / std::max<qint64>(1, *bytesPerSecond_)))
            return false;
    }
    return true;
}

ssize_t ShapedStream::read(char* target, size_t size) {
    const qint64 body = read_ - headLength_;
    if (!strike(Phase::requestBytes, body))
        return -1;
    const qint64 most = std::min<qint64>(static_cast<qint64>(size), untilCut(Phase::requestBytes, body));
    const ssize_t got = connection_.read(target, static_cast<size_t>(most));
    read_ += std::max<ssize_t>(got, 0);
    return got;
}

ssize_t ShapedStream::write(const char* bytes, size_t size) {
    const QByteArrayView view(bytes, static_cast<qsizetype>(size));
    // "100 Continue" is no part of the reply.
    const bool isInterim = sent_ == 0 && heldBack_.isEmpty() && view.startsWith("HTTP/1.1 1");
    if (isInterim)
        return connection_.write(bytes, size);
    if (holdsBack_)
        heldBack_.append(view);
    else if (!send(view))
        return -1;
    return static_cast<ssize_t>(size);
}

void ShapedStream::get_remote_ip_and_port(std::string& ip, int& port) const {
    connection_.get_remote_ip_and_port(ip, port);
}

void ShapedStream::get_local_ip_and_port(std::string& ip, int& port) const {
    connection_.get_local_ip_and_port(ip, port);
}

qint64 ShapedStream::untilCut(Phase phase, qint64 position) const {
    qint64 nearest = std::numeric_limits<qint64>::max();
    for (const Cut& cut : cuts_) {
        if (cut.point.phase == phase && cut.point.bytes > position)
            nearest = std::min(nearest, cut.point.bytes - position);
    }
    return nearest;
}

bool ShapedStream::strike(Phase phase, qint64 position) {
    const auto isDue = [&](const Cut& cut) { return cut.point.phase == phase && cut.point.bytes <= position; };
    for (auto cut = std::find_if(cuts_.begin(), cuts_.end(), isDue); cut != cuts_.end();
         cut = std::find_if(cuts_.begin(), cuts_.end(), isDue)) {
        const Cut due = *cut;
        cuts_.erase(cut);
        if (due.kind == Kind::reset)
            connection_.reset();
        else if (due.kind == Kind::drop)
            connection_.drop();
        else
            connection_.pause(due.duration);
    }
    return connection_.isOpen();
}

} // namespace quenby::localdrive
