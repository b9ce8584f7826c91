// Signing in to the pages and out, and the files that pages are made of.
#pragma once

#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/oauth/FormGuard.h"
#include "localdrive/server/oauth/TokenStore.h"
#include "localdrive/server/web/PageTemplates.h"
#include "localdrive/store/Account.h"

namespace quenby::localdrive {

// Threads: any.
class PageEndpoint {
public:
    PageEndpoint(TokenStore& tokens, const PageTemplates& pages, const FormGuard& guard, Account owner);

    void addRoutes(HttpServer& server);

private:
    void showSignIn(const httplib::Request& request, httplib::Response& response) const;
    void signIn(const httplib::Request& request, httplib::Response& response);
    void signOut(const httplib::Request& request, httplib::Response& response);
    void sendAsset(const httplib::Request& request, httplib::Response& response) const;
    void showMessage(int status, const QString& heading, const QString& text, httplib::Response& response) const;

    TokenStore& tokens_;
    const PageTemplates& pages_;
    const FormGuard& guard_;
    const Account owner_;
};

} // namespace quenby::localdrive
