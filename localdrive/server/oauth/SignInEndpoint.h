// GET /o/oauth2/auth and POST /o/oauth2/approve: a person lets a program use the Drive, or does not.
#pragma once

#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/oauth/AuthorizationRequest.h"
#include "localdrive/server/oauth/FormGuard.h"
#include "localdrive/server/oauth/TokenStore.h"
#include "localdrive/server/web/PageTemplates.h"

namespace quenby::localdrive {

// Threads: any.
class SignInEndpoint {
public:
    SignInEndpoint(TokenStore& tokens, const PageTemplates& pages, const FormGuard& guard, Account owner,
                   Statistics& statistics);

    void addRoutes(HttpServer& server);

private:
    void showPage(const httplib::Request& request, httplib::Response& response) const;
    void decide(const httplib::Request& request, httplib::Response& response);
    void approve(const AuthorizationRequest& asked, const Account& user, httplib::Response& response);
    void answer(const AuthorizationRequest& asked, const QString& name, const QString& value,
                httplib::Response& response) const;
    void refuse(const AuthorizationRequest::Failure& failure, httplib::Response& response) const;

    TokenStore& tokens_;
    const PageTemplates& pages_;
    const FormGuard& guard_;
    const Account owner_;
    Statistics& statistics_;
};

} // namespace quenby::localdrive
