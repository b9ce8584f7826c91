#include "app/uploads/transfer/UploadTrouble.h"

#include "app/uploads/transfer/DriveAnswer.h"

#include <algorithm>
#include <array>

namespace quenby {
namespace {

constexpr int forbidden = 403;
constexpr std::array passingStatuses{408, 429, 500, 502, 503, 504};
constexpr std::array lostSessionStatuses{404, 410};
constexpr std::array passingNetworkErrors{
    URLErrorCode::timedOut,
    URLErrorCode::cannotFindHost,
    URLErrorCode::cannotConnectToHost,
    URLErrorCode::networkConnectionLost,
    URLErrorCode::badServerResponse,
    URLErrorCode::zeroByteResource,
};

template <typename Codes>
bool contains(const Codes& codes, qint64 code) {
    return std::any_of(codes.begin(), codes.end(), [code](auto known) { return static_cast<qint64>(known) == code; });
}

// A 403 that only asks to be slower: the same request is welcome later. What is used up for the day is none of these.
bool asksToBeSlower(const Error& error) {
    const QStringList reasons = driveReasonsOf(error);
    return reasons.contains(QLatin1String("rateLimitExceeded")) ||
           reasons.contains(QLatin1String("userRateLimitExceeded"));
}

} // namespace

UploadTrouble troubleOf(const Error& error, bool hasLocation) {
    // A piece of an upload that failed below HTTP tells the network's code in the status domain.
    const bool isStatus = error.domain() == errorDomain::httpStatus;
    if ((isStatus || error.domain() == errorDomain::url) && contains(passingNetworkErrors, error.code()))
        return UploadTrouble::passing;
    const qint64 status = driveStatusOf(error);
    if (error.is(FetcherErrorCode::chunkUploadFailed) || contains(passingStatuses, status))
        return UploadTrouble::passing;
    if (status == forbidden && asksToBeSlower(error))
        return UploadTrouble::passing;
    if (hasLocation && contains(lostSessionStatuses, status))
        return UploadTrouble::lostSession;
    return UploadTrouble::final;
}

} // namespace quenby
