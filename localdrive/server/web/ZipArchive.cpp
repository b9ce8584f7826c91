#include "localdrive/server/web/ZipArchive.h"

#include <QtEndian>

#include <zlib.h>

namespace quenby::localdrive {
namespace {

template <typename Number>
QByteArray little(Number number) {
    QByteArray bytes(sizeof number, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

constexpr quint16 versionNeeded = 20;
constexpr quint16 utf8Names = 1 << 11;
constexpr quint16 noTime = 0;
constexpr quint16 firstDate = (1 << 5) | 1; // 1980-01-01, the same for every archive

} // namespace

void ZipArchive::add(const QByteArray& name, const QByteArray& content) {
    const auto size = static_cast<quint32>(content.size());
    const auto sum = static_cast<quint32>(::crc32(0, reinterpret_cast<const Bytef*>(content.constData()), size));
    const auto offset = static_cast<quint32>(members_.size());
    // What the member's own header and the directory's entry have in common.
    const QByteArray facts = little(versionNeeded) + little(utf8Names) + little<quint16>(0) + little(noTime) +
                             little(firstDate) + little(sum) + little(size) + little(size) +
                             little(static_cast<quint16>(name.size())) + little<quint16>(0);
    members_ += "PK\x03\x04" + facts + name + content;
    directory_ += "PK\x01\x02" + little(versionNeeded) + facts + QByteArray(10, '\0') + little(offset) + name;
    ++count_;
}

QByteArray ZipArchive::bytes() const {
    return members_ + directory_ + "PK\x05\x06" + little<quint32>(0) + little(count_) + little(count_) +
           little(static_cast<quint32>(directory_.size())) + little(static_cast<quint32>(members_.size())) +
           little<quint16>(0);
}

} // namespace quenby::localdrive
