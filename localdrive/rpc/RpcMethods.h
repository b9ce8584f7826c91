// Every method of the API by name, "drive.about.get" to "drive.revisions.update".
//
// A call is one transaction: all of it happens or nothing, and when call() returns a result, its effects are on disk.
//
// Threads: any, also at the same time.
#pragma once

#include "localdrive/store/Account.h"
#include "localdrive/store/DriveStore.h"
#include "localdrive/store/IncomingBlob.h"
#include "localdrive/store/Session.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace quenby::localdrive {

// What a call needs besides its parameters.
struct CallContext : Caller {
    // The content for drive.files.insert, drive.files.update and drive.realtime.update. It is adopted when the call
    // succeeds; when it fails, the part file is as before.
    std::optional<StagedBlob> media = std::nullopt;
    QString mediaType = {}; // the content's MIME type; the resource's own `mimeType` wins

    // Called with the result inside the transaction, before it commits: what is written here stands exactly when the
    // call's effects do. An upload notes here that it is complete, so that asking again never inserts a second file.
    std::function<void(Session&, const QJsonObject& result)> beforeCommit = nullptr;
};

class RpcMethods {
public:
    explicit RpcMethods(DriveStore& store)
        : store_(store) {}

    // {"result": {...}} or {"error": {"code", "message", "data": [{"domain", "reason", "message"}]}}. A method without
    // a result yields an empty one. An error's code is the HTTP status, or below 0 for failures of the envelope such as
    // an unknown method (-32601). The parameter "fields" cuts the result down to what it names.
    QJsonObject call(const QString& method, const QJsonObject& params, const CallContext& context) const;

    // Whether a call with a content of so many bytes could be made at this moment: 403 "quotaExceeded" when there is no
    // room, and what the id says that an inserted file shall have. The call itself looks again.
    Result<void> checkAnnounced(const QString& method, const QJsonObject& params, qint64 bytes) const;
    // Whether the method takes a content, that is, may be announced at the upload address.
    static bool takesMedia(const QString& method);
    static QStringList names();

private:
    DriveStore& store_;
};

} // namespace quenby::localdrive
