// The pages of native documents: /docs/KIND/create, /docs/KIND/d/ID/edit, and /viewer/ID for printing.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageFrame.h"
#include "localdrive/server/web/PageGuard.h"
#include "localdrive/store/NativeTypes.h"

namespace quenby::localdrive {

// Threads: any.
class DocumentPages {
public:
    DocumentPages(DriveStore& store, const RpcMethods& methods, const PageGuard& guard, const PageFrame& frame)
        : store_(store)
        , methods_(methods)
        , guard_(guard)
        , frame_(frame) {}

    void addRoutes(HttpServer& server);

private:
    void create(const NativeKind& kind, const httplib::Request& request, httplib::Response& response) const;
    Result<QJsonObject> insert(QJsonObject resource, const QString& folder, const Caller& caller) const;
    void askBeforeCreating(const NativeKind& kind, const httplib::Request& request, httplib::Response& response) const;
    void edit(const NativeKind& kind, const httplib::Request& request, httplib::Response& response) const;
    void showForPrinting(const httplib::Request& request, httplib::Response& response) const;
    // What is printed of it, as HTML; nothing for what browsers can't show.
    std::optional<QString> printed(const QString& fileId, const QJsonObject& file, const Caller& caller) const;
    void showMissing(const Caller& caller, httplib::Response& response) const;

    DriveStore& store_;
    const RpcMethods& methods_;
    const PageGuard& guard_;
    const PageFrame& frame_;
};

} // namespace quenby::localdrive
