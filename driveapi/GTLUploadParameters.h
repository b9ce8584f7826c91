// The media that a query uploads: its source, its type, and how it is sent. A plain value.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QUrl>

#include <memory>
#include <variant>

namespace quenby {

struct GTLUploadParameters {
    // Exactly one source: bytes in memory, a file open for reading, or the address of a file that the service opens.
    // An open file is shared with the upload, which reads it from its own position and never closes it; a null one
    // makes the upload fail with an error.
    using Media = std::variant<QByteArray, std::shared_ptr<QFile>, QUrl>;

    Media media;
    QByteArray MIMEType;
    QUrl uploadLocationURL;            // of an upload already begun, to resume it; a secret
    QString slug;                      // the file name for the header "Slug"
    bool shouldSendUploadOnly = false; // the media alone, without the call's own body

    static GTLUploadParameters uploadParametersWithData(const QByteArray& data, const QByteArray& MIMEType);
    static GTLUploadParameters uploadParametersWithFileHandle(std::shared_ptr<QFile> fileHandle,
                                                              const QByteArray& MIMEType);
    static GTLUploadParameters uploadParametersWithFileURL(const QUrl& fileURL, const QByteArray& MIMEType);

    QByteArray data() const;
    std::shared_ptr<QFile> fileHandle() const;
    QUrl fileURL() const;

    // For logs; holds neither the media nor the upload location.
    QString description() const;
};

} // namespace quenby
