#include "app/uploads/transfer/CopyCheck.h"

#include "app/uploads/transfer/UploadRun.h"
#include "driveapi/GTLDriveFile.h"

namespace quenby {
namespace {

Error uploadError(UploadErrorCode code, const QString& reason) {
    return Error(uploadErrorDomain, static_cast<qint64>(code), {{errorKey::reason, reason}});
}

QString nameOf(const GTLDriveFile& copy) {
    return QStringLiteral("the copy on the Drive (") + copy.identifier() + QLatin1Char(')');
}

bool isOfOtherSize(const SourceFile& source, const GTLDriveFile& copy) {
    return copy.JSON()->contains("fileSize") && copy.fileSize() != source.size();
}

QString whatToDo(CopyOrigin origin) {
    return origin == CopyOrigin::sentNow
               ? QStringLiteral("; delete that copy and upload the file again")
               : QStringLiteral("; that copy was made from another state of the file: look which of them you need, "
                                "remove this upload, and upload the file anew");
}

} // namespace

Error changedWhileSent() {
    return uploadError(UploadErrorCode::fileChanged,
                       QStringLiteral("changed while it was sent; upload it again when it is complete"));
}

MaybeError differenceOfCopy(const SourceFile& source, const std::optional<Result<QByteArray>>& localSum,
                            const GTLDriveFile& copy, CopyOrigin origin) {
    if (!source.isUnchanged())
        return uploadError(UploadErrorCode::fileChanged,
                           QStringLiteral("changed while it was sent, so that ") + nameOf(copy) +
                               QStringLiteral(" may be a mixture; delete that copy and upload the file again"));
    if (!localSum)
        return std::nullopt;
    if (isOfOtherSize(source, copy))
        return uploadError(UploadErrorCode::copyDiffers,
                           nameOf(copy) +
                               QStringLiteral(" differs from the file: it has %1 bytes instead of %2")
                                   .arg(copy.fileSize())
                                   .arg(source.size()) +
                               whatToDo(origin));
    if (!*localSum)
        return localSum->error();
    const QString remote = copy.md5Checksum();
    const QString local = QString::fromLatin1(**localSum);
    if (remote.isEmpty())
        return uploadError(UploadErrorCode::sumMissing, QStringLiteral("was sent, but the Drive tells no MD5 sum of ") +
                                                            nameOf(copy) +
                                                            QStringLiteral("; look whether that copy is whole"));
    if (remote.compare(local, Qt::CaseInsensitive) != 0)
        return uploadError(UploadErrorCode::copyDiffers,
                           nameOf(copy) + QStringLiteral(" differs from the file: its MD5 sum is ") + remote +
                               QStringLiteral(" instead of ") + local + whatToDo(origin));
    return std::nullopt;
}

} // namespace quenby
