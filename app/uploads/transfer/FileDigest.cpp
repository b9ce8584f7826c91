#include "app/uploads/transfer/FileDigest.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include <openssl/evp.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr size_t pieceSize = 256 * 1024; // bytes read at once

Error readError(int code) {
    const QString reason =
        QStringLiteral("could not be read to the end: ") + QString::fromLocal8Bit(std::strerror(code));
    return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
}

Result<QByteArray> md5Of(int descriptor, const std::atomic_bool& isStopped) {
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!context || EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) != 1) {
        return Error(
            errorDomain::posix, ENOTSUP,
            {{errorKey::reason,
              QStringLiteral(
                  "this system computes no MD5 sums, so that the copy was not compared; look whether it is whole")}});
    }
    std::vector<char> piece(pieceSize);
    for (off_t offset = 0; !isStopped;) {
        const ssize_t count = ::pread(descriptor, piece.data(), piece.size(), offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return readError(errno);
        if (count == 0)
            break;
        EVP_DigestUpdate(context.get(), piece.data(), static_cast<size_t>(count));
        offset += count;
    }
    QByteArray digest(EVP_MAX_MD_SIZE, '\0');
    unsigned length = 0;
    EVP_DigestFinal_ex(context.get(), reinterpret_cast<unsigned char*>(digest.data()), &length);
    return digest.first(length).toHex();
}

} // namespace

FileDigest::FileDigest(std::shared_ptr<QFile> file, QObject* context, Handler handler)
    : gate_(context, std::move(handler)) {
    thread_ = std::thread([this, file = std::move(file)] { gate_.deliver(md5Of(file->handle(), isStopped_)); });
}

FileDigest::~FileDigest() {
    gate_.ticket().cancel();
    isStopped_ = true;
    thread_.join();
}

} // namespace quenby
