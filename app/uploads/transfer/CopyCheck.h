// Whether what the Drive holds is the local file.
#pragma once

#include "app/uploads/transfer/SourceFile.h"

namespace quenby {

class GTLDriveFile;

// How the copy came to be known.
enum class CopyOrigin {
    sentNow, // the answer to the upload that has just ended
    found,   // the Drive had it under the identifier that was meant for this file
};

// What keeps the copy from being taken for the file, with the domain uploadErrorDomain or, where the file's own MD5 sum
// could not be computed, that error. Without a sum only the file is looked at.
MaybeError differenceOfCopy(const SourceFile& source, const std::optional<Result<QByteArray>>& localSum,
                            const GTLDriveFile& copy, CopyOrigin origin);

// The file changed, and no copy is known.
Error changedWhileSent();

} // namespace quenby
