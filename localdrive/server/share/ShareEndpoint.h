// GET /sharing/share: the dialog in which a file is shared, and /sharing/permissions: what its script asks for.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/share/ShareSessions.h"
#include "localdrive/server/web/PageTemplates.h"

#include <functional>

namespace quenby::localdrive {

// Threads: any.
class ShareEndpoint {
public:
    ShareEndpoint(const RpcMethods& methods, TokenStore& tokens, const Authenticator& authenticator,
                  const PageTemplates& pages, Statistics& statistics);

    void addRoutes(HttpServer& server);

private:
    using Change = std::function<Result<void>(const QString& fileId, const Caller& caller)>;

    void showDialog(const httplib::Request& request, httplib::Response& response);
    void showMessage(int status, const QString& heading, const QString& text, httplib::Response& response) const;
    // Does what a dialog asks for and answers with the state afterwards.
    void apply(const Change& change, const httplib::Request& request, httplib::Response& response) const;
    void sendError(const Error& error, httplib::Response& response) const;
    std::optional<Caller> callerOf(const ShareCredential& credential) const;

    const RpcMethods& methods_;
    TokenStore& tokens_;
    const Authenticator& authenticator_;
    const PageTemplates& pages_;
    Statistics& statistics_;
    ShareSessions sessions_;
};

} // namespace quenby::localdrive
