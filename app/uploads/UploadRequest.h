// One file that somebody wants in the Drive, and what is to happen when it is there.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

namespace quenby {

class GTLQueryDrive;

struct UploadRequest {
    QByteArray path;
    QString typeUpload = QStringLiteral("File"); // what a failure is told of: "File", or the destination folder's name
    QString folderName = {};                     // at the top of the Drive, made when absent; empty: see query
    bool needToShare = false;
    bool removeSource = false;                 // deletes the local file at the end, however it ends
    std::shared_ptr<GTLQueryDrive> query = {}; // the prepared insert; null: a plain file
    bool mayBeGone = false;                    // a file that is gone at its turn is left out without a word
    bool isCapture = false;                    // made by this program just now: its link is copied (CaptureLinks)
    QString parentId = {};                     // the folder's identifier, once found; empty: the top of the Drive
    qint64 number = 0;                         // given by the queue: its signals name the request by it
};

// For writing requests down, to be taken up by another run of the program: one line of text a request, without its line
// break and without secrets. A request for a folder looks for the folder again.
QByteArray lineFromRequest(const UploadRequest& request);
// Nothing when the line is none of those.
std::optional<UploadRequest> requestFromLine(const QByteArray& line);

// The path's last component as a message may show it: bytes that are no text and whatever would disturb the lines or
// the direction of writing are spelled out. The joiners that some scripts and emoji are written with stay.
QString nameForPeople(const QByteArray& path);
// The same for text, as it is.
QString textForPeople(const QString& text);

} // namespace quenby
