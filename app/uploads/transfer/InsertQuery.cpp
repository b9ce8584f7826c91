#include "app/uploads/transfer/InsertQuery.h"

#include "app/uploads/transfer/MIMETypeFileName.h"
#include "app/uploads/transfer/SourceFile.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"

namespace quenby {

std::shared_ptr<GTLQueryDrive> insertQueryForPath(const QByteArray& path, const QString& parentId) {
    const auto file = GTLDriveFile::object();
    file->setTitle(titleOfPath(path));
    if (!parentId.isEmpty()) {
        const auto parent = GTLDriveParentReference::object();
        parent->setIdentifier(parentId);
        file->setParents(GTLArray<GTLDriveParentReference>::make({parent}));
    }
    return GTLQueryDrive::queryForFilesInsertWithObject(
        file, GTLUploadParameters::uploadParametersWithFileHandle(nullptr, MIMETypeFileName(file->title()).toUtf8()));
}

} // namespace quenby
