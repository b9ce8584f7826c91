// On whose behalf a request is made.
#pragma once

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/server/oauth/TokenStore.h"
#include "localdrive/store/Account.h"

namespace quenby::localdrive {

// Threads: any.
class Authenticator {
public:
    Authenticator(TokenStore& tokens, const ServerClock& clock, QUrl base);

    // The caller that the bearer token stands for. Without a valid one: nothing, and the response is a 401.
    std::optional<Caller> byToken(const httplib::Request& request, httplib::Response& response,
                                  ErrorForm form = ErrorForm::rpc) const;
    // The same, but a page's cookie does as well.
    std::optional<Caller> byTokenOrPage(const httplib::Request& request, httplib::Response& response,
                                        ErrorForm form = ErrorForm::rpc) const;
    // Nothing when nobody is signed in to the pages.
    std::optional<Caller> byPage(const httplib::Request& request) const;
    // Only a token that is sent and does not hold is refused: false, and the response is a 401.
    bool acceptsTokenIfSent(const httplib::Request& request, httplib::Response& response,
                            ErrorForm form = ErrorForm::rpc) const;

    Caller callerFor(const Account& user, const CallingProgram& program = {}) const;
    const QUrl& base() const { return base_; }

private:
    TokenStore& tokens_;
    const ServerClock& clock_;
    const QUrl base_;
};

} // namespace quenby::localdrive
