// What a program asks for when it sends a person to the sign-in page (RFC 6749 section 4.1.1, RFC 7636 section 4.3).
#pragma once

#include "core/Result.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <httplib.h>

namespace quenby::localdrive {

struct AuthorizationRequest {
    QString clientId;
    QString redirectUri;
    QString scope;
    QString state;
    QByteArray codeChallenge; // method S256; empty: none

    // The answer is the title of a page of ours, for programs that show the page themselves.
    bool answersInTitle() const;
    // The redirect address with the answer and the state. Only when !answersInTitle().
    QUrl answerUrl(const QString& name, const QString& value) const;

    // One line for a form's hidden field, and back. The field is signed by the page, so parsing trusts it.
    QByteArray toField() const;
    static AuthorizationRequest fromField(const QByteArray& field);

    struct Failure {
        Error error;
        // False when client or redirect address are at fault: then the error is shown, and nobody is redirected.
        bool mayRedirect;
        QString redirectUri;
        QString state;
    };
    static std::variant<AuthorizationRequest, Failure> parse(const httplib::Request& request);
};

} // namespace quenby::localdrive
