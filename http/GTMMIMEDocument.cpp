#include "http/GTMMIMEDocument.h"

#include "http/GTMGatherInputStream.h"

#include <QRandomGenerator>

#include <algorithm>
#include <numeric>

namespace quenby {
namespace {

constexpr qint64 scanBlockSize = 64 * 1024;

QByteArray headerBlock(const HeaderFields& headers) {
    std::vector<HeaderFields::Field> fields(headers.begin(), headers.end());
    std::stable_sort(fields.begin(), fields.end(),
                     [](const auto& a, const auto& b) { return a.first.compare(b.first, Qt::CaseInsensitive) < 0; });
    QByteArray block;
    for (const auto& [name, value] : fields)
        block += name + ": " + value + "\r\n";
    return block + "\r\n";
}

// Reads block by block; the end of one block is looked at again with the beginning of the next, so that nothing is
// missed between them.
bool deviceContains(QIODevice& device, QByteArrayView bytes) {
    if (!device.seek(0))
        return false;
    QByteArray window;
    for (;;) {
        const QByteArray block = device.read(scanBlockSize);
        if (block.isEmpty())
            return false;
        window += block;
        if (window.contains(bytes))
            return true;
        window = window.last(std::min(window.size(), bytes.size() - 1));
    }
}

QByteArray eightDigits(quint32 number) { return QByteArray::number(number, 16).rightJustified(8, '0'); }

} // namespace

GTMMIMEPart GTMMIMEPart::partWithHeaders(const HeaderFields& headers, const QByteArray& body) {
    return GTMMIMEPart(headers, body);
}

GTMMIMEPart GTMMIMEPart::partWithHeaders(const HeaderFields& headers, std::shared_ptr<QIODevice> body) {
    return GTMMIMEPart(headers, std::move(body));
}

GTMMIMEPart::GTMMIMEPart(const HeaderFields& headers, Body body)
    : headerData_(headerBlock(headers))
    , bodyData_(std::move(body)) {}

qint64 GTMMIMEPart::length() const {
    const auto* data = std::get_if<QByteArray>(&bodyData_);
    return headerData_.size() + (data ? data->size() : std::get<std::shared_ptr<QIODevice>>(bodyData_)->size());
}

bool GTMMIMEPart::containsBytes(QByteArrayView bytes) const {
    if (headerData_.contains(bytes))
        return true;
    if (const auto* data = std::get_if<QByteArray>(&bodyData_))
        return data->contains(bytes);
    return deviceContains(*std::get<std::shared_ptr<QIODevice>>(bodyData_), bytes);
}

void GTMMIMEDocument::addPartWithHeaders(const HeaderFields& headers, const QByteArray& body) {
    parts_.push_back(GTMMIMEPart::partWithHeaders(headers, body));
}

void GTMMIMEDocument::addPartWithHeaders(const HeaderFields& headers, std::shared_ptr<QIODevice> body) {
    parts_.push_back(GTMMIMEPart::partWithHeaders(headers, std::move(body)));
}

qint64 GTMMIMEDocument::length() const {
    return std::accumulate(parts_.begin(), parts_.end(), qint64(0),
                           [](qint64 sum, const GTMMIMEPart& part) { return sum + part.length(); });
}

MIMEBody GTMMIMEDocument::generateInputStream() const {
    const QByteArray boundary = uniqueBoundary();
    const QByteArray separator = "\r\n--" + boundary + "\r\n";
    std::vector<GTMGatherInputStream::Piece> pieces;
    for (const GTMMIMEPart& part : parts_) {
        pieces.emplace_back(separator);
        pieces.emplace_back(part.header());
        pieces.push_back(part.body());
    }
    pieces.emplace_back(QByteArray("\r\n--" + boundary + "--\r\n"));
    const auto stream = std::make_shared<GTMGatherInputStream>(std::move(pieces));
    return MIMEBody{stream, stream->size(), boundary};
}

QByteArray GTMMIMEDocument::uniqueBoundary() const {
    static const QByteArray plain = QByteArrayLiteral("END_OF_PART");
    constexpr int candidates = 10;
    QByteArray candidate = plain;
    for (int tried = 0; tried < candidates; ++tried) {
        if (!occursInAnyPart(candidate))
            return candidate;
        candidate = plain + '_' + eightDigits(random());
    }
    return eightDigits(random()) + "_mivorak_" + eightDigits(random());
}

quint32 GTMMIMEDocument::random() const {
    return randomSeed_ != 0 ? randomSeed_ : QRandomGenerator::system()->generate();
}

bool GTMMIMEDocument::occursInAnyPart(QByteArrayView bytes) const {
    return std::any_of(parts_.begin(), parts_.end(),
                       [bytes](const GTMMIMEPart& part) { return part.containsBytes(bytes); });
}

} // namespace quenby
