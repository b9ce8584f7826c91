// The one place that decides what is a secret. Everything that is written anywhere (process log, fetch log, error
// text, diagnostics) passes through here first.
//
// Secrets are access, refresh and identity tokens, authorization codes and their verifiers, assertions, client
// secrets, passwords, and upload locations: whoever knows the location of a resumable upload can write to it.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace quenby::redaction {

// What stands in a secret's place.
inline constexpr char snip[] = "_snip_";

// A form-encoded body (application/x-www-form-urlencoded), or the query of an address: the values of secret names.
QByteArray formBody(const QByteArray& body);

// A JSON body: every string under a secret name, at any depth, then readable indentation. A body that is no JSON comes
// back as text() makes it.
QByteArray jsonBody(const QByteArray& body);

// One header field's value: Authorization and its kind up to the end of the line, cookies' values, upload locations,
// and whatever a field carries whose name speaks of a token, a secret or a password.
QByteArray headerValue(const QByteArray& name, const QByteArray& value);

// An address: user info and the values of secret query items; of an upload address the whole query.
QString url(const QUrl& url);

// An address that is a secret as a whole, such as an upload location of any form: its scheme, host and port alone.
QString secretURL(const QUrl& url);

// Free text of unknown kind: everything above that can be recognised inside it.
QString text(const QString& text);

} // namespace quenby::redaction
