// Who is signed in to the pages, by a cookie.
#pragma once

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/store/Account.h"

namespace quenby::localdrive {

inline constexpr char webSessionCookie[] = "quenby_session";

inline QByteArray webSession(const httplib::Request& request) { return cookie(request, webSessionCookie); }

// Kept for a month of not coming back: a browser that ends must not sign anybody out.
inline void setWebSession(httplib::Response& response, const QByteArray& session) {
    const QByteArray attributes =
        session.isEmpty() ? "; Path=/; Max-Age=0" : "; Path=/; HttpOnly; SameSite=Lax; Max-Age=2592000";
    const QByteArray value = webSessionCookie + QByteArray("=") + session + attributes;
    response.headers.emplace("Set-Cookie", value.toStdString());
}

// The account that a person signs in as. Any address is taken: a Drive on one's own computer has nobody to ask. The
// owner's has the owner's name, others are named by what stands before the "@".
inline Account signedInAccount(const QString& address, const Account& owner) {
    const QString email = address.trimmed();
    if (email.isEmpty() || email.compare(owner.emailAddress, Qt::CaseInsensitive) == 0)
        return owner;
    return {email.section(QLatin1Char('@'), 0, 0), email};
}

} // namespace quenby::localdrive
