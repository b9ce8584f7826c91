// Several files at once: POST /web/archive notes which, GET /e/export-result sends them as a ZIP archive.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageFrame.h"
#include "localdrive/server/web/PageGuard.h"

#include <QHash>
#include <QStringList>

#include <mutex>

namespace quenby::localdrive {

// Threads: any. Archives can be had while the process lives and not too many were asked for after them.
class ArchiveEndpoint {
public:
    ArchiveEndpoint(DriveStore& store, const RpcMethods& methods, const PageGuard& guard, const PageFrame& frame)
        : store_(store)
        , methods_(methods)
        , guard_(guard)
        , frame_(frame) {}

    void addRoutes(HttpServer& server);

private:
    struct Wish {
        QString archiveId;
        QString emailAddress; // who may have it
        QStringList fileIds;
    };

    void note(const httplib::Request& request, httplib::Response& response);
    void sendArchive(const httplib::Request& request, httplib::Response& response) const;
    QStringList wished(const QString& archiveId, const Caller& caller) const;
    // The files of those ids, each once.
    Result<QList<QJsonObject>> find(const QStringList& ids, const Caller& caller) const;

    DriveStore& store_;
    const RpcMethods& methods_;
    const PageGuard& guard_;
    const PageFrame& frame_;
    mutable std::mutex mutex_;
    QList<Wish> wishes_; // the oldest first
};

} // namespace quenby::localdrive
