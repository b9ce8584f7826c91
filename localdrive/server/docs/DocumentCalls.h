// What the scripts of the documents' pages ask for, below /docs/files/ID/: content, title, copy, trash, untrash.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageGuard.h"

#include <functional>

namespace quenby::localdrive {

// Threads: any.
class DocumentCalls {
public:
    DocumentCalls(DriveStore& store, const RpcMethods& methods, const PageGuard& guard)
        : store_(store)
        , methods_(methods)
        , guard_(guard) {}

    void addRoutes(HttpServer& server);

private:
    using Answer =
        std::function<Result<QJsonObject>(const QString& fileId, const QJsonObject& asked, const Caller& caller)>;

    // Answers what one of our pages asks for, with JSON.
    httplib::Server::Handler handler(Answer answer) const;
    Result<QJsonObject> call(const QString& method, const QString& fileId, const Caller& caller) const;

    DriveStore& store_;
    const RpcMethods& methods_;
    const PageGuard& guard_;
};

} // namespace quenby::localdrive
