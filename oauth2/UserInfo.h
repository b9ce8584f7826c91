// Who signed in, as the provider tells it in an identity token or at its user-info endpoint.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace quenby::oauth2 {

struct UserInfo {
    QVariantMap profile; // everything that was told
    QString userID;
    QString email;
    QString emailIsVerified; // "true" or "false"; empty when not told
};

// Nothing unless the data is a JSON object.
std::optional<UserInfo> userInfoFromJSON(const QByteArray& data);

// From the claims of an identity token: three parts joined by ".", the middle one JSON in URL-safe base64. Its
// signature is not checked: it came over https from the token server itself (OpenID Connect Core, 3.1.3.7).
// Nothing unless both the user id and the e-mail address are there.
std::optional<UserInfo> userInfoFromIDToken(const QString& token);

} // namespace quenby::oauth2
