#include "app/uploads/transfer/UploadRefusal.h"

#include "app/uploads/transfer/DriveAnswer.h"

#include <array>

namespace quenby {
namespace {

struct Refusal {
    const char* reason; // the Drive's name for it
    const char* sentence;
};

constexpr const char* full = "The Drive is full: delete files, empty its trash or buy storage, then retry";
constexpr const char* folderIsClosed =
    "The folder lets you add no files: ask its owner for the permission, or upload to another folder";
constexpr const char* folderIsGone =
    "The folder is not there any more: choose another one, or restore it from the trash";
constexpr const char* signInIsTooNarrow =
    "The sign-in does not cover this upload: sign out, sign in again and allow the access to the Drive, then retry";

// In the order in which they count when the Drive names several.
constexpr std::array refusals{
    Refusal{"storageQuotaExceeded", full},
    Refusal{"quotaExceeded", full},
    Refusal{"teamDriveFileLimitExceeded",
            "The shared drive has as many files as it may have: delete some of them, or upload to another folder"},
    Refusal{"uploadTooLarge", "The file is larger than the Drive takes: make it smaller or divide it"},
    Refusal{"dailyLimitExceeded", "The Drive takes no more of this program today: retry tomorrow"},
    Refusal{"insufficientFilePermissions", folderIsClosed},
    Refusal{"teamDriveMembershipRequired", folderIsClosed},
    Refusal{"parentNotFound", folderIsGone},
    Refusal{"notFound", folderIsGone},
    Refusal{"insufficientPermissions", signInIsTooNarrow},
    Refusal{"appNotAuthorizedToFile",
            "The program was allowed to use only what it made itself, and the folder is none of it: upload to another "
            "folder, or sign in with access to the whole Drive"},
    Refusal{"domainPolicy", "The rules of your organisation forbid this program to use the Drive: ask its "
                            "administrator"},
    Refusal{"accessNotConfigured",
            "The Drive API is not switched on for the client that the program signs in with: switch it on, then retry"},
    Refusal{"forbidden", "You may not upload to this place: ask its owner for the permission, or upload to another "
                         "folder"},
};

const char* sentenceOfStatus(qint64 status) {
    switch (status) {
    case 409:
        return "The Drive has had this file already, and does not show it: look for it there and in the trash; when "
               "it is missing, remove this upload and upload the file anew";
    case 413:
        return "The file is larger than the Drive takes: make it smaller or divide it";
    default:
        return "";
    }
}

} // namespace

QString refusalSentence(const Error& error) {
    const QStringList reasons = driveReasonsOf(error);
    for (const Refusal& refusal : refusals) {
        if (reasons.contains(QLatin1String(refusal.reason)))
            return QString::fromLatin1(refusal.sentence);
    }
    return QString::fromLatin1(sentenceOfStatus(driveStatusOf(error)));
}

} // namespace quenby
