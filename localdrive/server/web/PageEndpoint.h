// The pages for people: sign-in, the list of files, a file, sign-out.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/oauth/FormGuard.h"
#include "localdrive/server/web/PageTemplates.h"

namespace quenby::localdrive {

// Threads: any.
class PageEndpoint {
public:
    PageEndpoint(const RpcMethods& methods, TokenStore& tokens, const Authenticator& authenticator,
                 const PageTemplates& pages, const FormGuard& guard, Account owner);

    void addRoutes(HttpServer& server);

private:
    void showFolder(const QString& folderId, const httplib::Request& request, httplib::Response& response) const;
    void showFile(const QString& fileId, const httplib::Request& request, httplib::Response& response) const;
    void showSignIn(const httplib::Request& request, httplib::Response& response) const;
    void signIn(const httplib::Request& request, httplib::Response& response);
    void signOut(const httplib::Request& request, httplib::Response& response);
    void showMessage(int status, const QString& heading, const QString& text, httplib::Response& response) const;

    // Who is signed in; otherwise nothing, and the response leads to the sign-in page and from there back.
    std::optional<Caller> visitor(const httplib::Request& request, httplib::Response& response) const;
    // The call's result; nothing when it failed, and the response says why.
    std::optional<QJsonObject> call(const QString& method, const QJsonObject& params, const Caller& caller,
                                    httplib::Response& response) const;

    const RpcMethods& methods_;
    TokenStore& tokens_;
    const Authenticator& authenticator_;
    const PageTemplates& pages_;
    const FormGuard& guard_;
    const Account owner_;
};

} // namespace quenby::localdrive
