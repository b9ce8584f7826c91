#include "localdrive/server/Authenticator.h"

#include "localdrive/server/web/WebSession.h"

namespace quenby::localdrive {
namespace {

// RFC 6750 section 3.
void refuse(httplib::Response& response, bool wasSent, ErrorForm form) {
    response.set_header("WWW-Authenticate", wasSent ? "Bearer error=\"invalid_token\"" : "Bearer");
    sendApiError(response, 401, wasSent ? "authError" : "required",
                 wasSent
                     ? QStringLiteral("The access token is expired, revoked or unknown. Refresh it or sign in again.")
                     : QStringLiteral("Login required: send an access token."),
                 form);
}

// A grant of the narrower of the two scopes alone shows a program its own files.
CallingProgram programOf(const Grant& grant) {
    bool all = false;
    bool own = false;
    for (const QString& scope : grant.scope.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        own = own || scope.endsWith(QLatin1String("/auth/drive.file"));
        all = all || scope.endsWith(QLatin1String("/auth/drive")) ||
              scope.endsWith(QLatin1String("/auth/drive.readonly"));
    }
    return {grant.clientId, own && !all};
}

} // namespace

Authenticator::Authenticator(TokenStore& tokens, const ServerClock& clock, QUrl base)
    : tokens_(tokens)
    , clock_(clock)
    , base_(std::move(base)) {}

Caller Authenticator::callerFor(const Account& user, const CallingProgram& program) const {
    return {user, base_, clock_.now(), program};
}

std::optional<Caller> Authenticator::byToken(const httplib::Request& request, httplib::Response& response,
                                             ErrorForm form) const {
    const auto token = bearerToken(request);
    if (const auto grant = token ? tokens_.grantOfAccessToken(*token) : std::nullopt)
        return callerFor(grant->user, programOf(*grant));
    refuse(response, token.has_value(), form);
    return std::nullopt;
}

std::optional<Caller> Authenticator::byTokenOrPage(const httplib::Request& request, httplib::Response& response,
                                                   ErrorForm form) const {
    if (!bearerToken(request)) {
        if (auto caller = byPage(request))
            return caller;
    }
    return byToken(request, response, form);
}

std::optional<Caller> Authenticator::byPage(const httplib::Request& request) const {
    const auto user = tokens_.userOfWebSession(webSession(request));
    return user ? std::optional(callerFor(*user)) : std::nullopt;
}

bool Authenticator::acceptsTokenIfSent(const httplib::Request& request, httplib::Response& response,
                                       ErrorForm form) const {
    return !bearerToken(request) || byToken(request, response, form);
}

} // namespace quenby::localdrive
