// The temporary file that a download is written to, and its move to the destination.
//
// It lies beside the destination, so that the move is a rename: the file that was there stays whole until the new one
// is. Bytes go straight to the descriptor; there is no buffer in between.
#pragma once

#include "core/Result.h"

#include <QByteArrayView>
#include <QString>

#include <memory>

namespace quenby {

class DownloadFile {
public:
    // In the destination's folder, or among the temporary files when that cannot be written to. The error is of
    // errorDomain::fetcher.
    static Result<std::unique_ptr<DownloadFile>> create(const QString& destination);
    // Deletes the temporary file unless it was moved into place.
    ~DownloadFile();
    DownloadFile(const DownloadFile&) = delete;
    DownloadFile& operator=(const DownloadFile&) = delete;

    const QString& temporaryPath() const { return temporaryPath_; }
    // Errors are of errorDomain::httpStatus with the code fileHandleErrorCode.
    MaybeError truncate();
    MaybeError write(QByteArrayView data);
    // Closes the file and puts it in the destination's place. The error is of errorDomain::posix; the temporary file
    // is still there then.
    MaybeError moveIntoPlace();

private:
    DownloadFile(QString destination, QString temporaryPath, int descriptor);
    int closeDescriptor(); // answers errno, 0 when all went well
    Error writeError(int cause) const;

    QString destination_;
    QString temporaryPath_;
    int descriptor_;
    bool isEmpty_ = true;
};

} // namespace quenby
