#include "app/uploads/transfer/FileDigest.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sys/resource.h>
#include <unistd.h>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr size_t pieceSize = 256 * 1024; // bytes read at once
constexpr int niceness = 10;             // more than others: a tenth of their time, and all that they leave

Error failure(int code, const QString& reason) { return Error(errorDomain::posix, code, {{errorKey::reason, reason}}); }

Error readError(int code) {
    return failure(code,
                   QStringLiteral("could not be read to the end: ") + QString::fromLocal8Bit(std::strerror(code)));
}

// The threads of the whole process that compute. Nobody waits for them but the process's end, when libcrypto must not
// be taken down while they use it; not even that waits for a disk that does not answer.
class Computations {
public:
    // libcrypto is up before this is, and so goes down after it.
    Computations() { OPENSSL_init_crypto(0, nullptr); }
    ~Computations() {
        std::unique_lock lock(mutex_);
        ended_.wait_for(lock, 2s, [this] { return running_ == 0; });
    }
    Computations(const Computations&) = delete;
    Computations& operator=(const Computations&) = delete;

    static Computations& ofTheProcess() {
        static Computations computations;
        return computations;
    }

    void begin() {
        const std::lock_guard lock(mutex_);
        ++running_;
    }
    void end() {
        const std::lock_guard lock(mutex_);
        --running_;
        ended_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable ended_;
    int running_ = 0;
};

Result<QByteArray> md5Of(int descriptor, const std::atomic_bool& isStopped) {
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!context || EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) != 1) {
        return failure(
            ENOTSUP,
            QStringLiteral(
                "this system computes no MD5 sums, so that the copy was not compared; look whether it is whole"));
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
    : gate_(context, std::move(handler))
    , isStopped_(std::make_shared<std::atomic_bool>(false)) {
    Computations& computations = Computations::ofTheProcess();
    computations.begin();
    try {
        std::thread([&computations, gate = gate_, isStopped = isStopped_, file = std::move(file)]() mutable {
            // Every thread has a niceness of its own here.
            ::setpriority(PRIO_PROCESS, 0, ::getpriority(PRIO_PROCESS, 0) + niceness);
            auto sum = md5Of(file->handle(), *isStopped);
            file.reset();
            gate.deliver(std::move(sum));
            computations.end();
        }).detach();
    } catch (const std::system_error&) {
        computations.end();
        gate_.deliver(failure(EAGAIN, QStringLiteral("could not be compared with its copy, because this computer can "
                                                     "start no more threads; close other programs")));
    }
}

FileDigest::~FileDigest() {
    gate_.ticket().cancel();
    *isStopped_ = true;
}

} // namespace quenby
