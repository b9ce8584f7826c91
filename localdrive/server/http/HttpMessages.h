// Between the library's requests and replies and Qt's types.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QUrl>

#include <optional>

#include <httplib.h>

namespace quenby::localdrive {

// Empty when there is no such header.
QByteArray header(const httplib::Request& request, const char* name);
// A parameter of the query or of a form-encoded body; empty when it is missing.
QString parameter(const httplib::Request& request, const char* name);
QByteArray cookie(const httplib::Request& request, QByteArrayView name);
// Part of the path that the route's expression caught, from 1.
QString pathPart(const httplib::Request& request, size_t index);
// The token of "Authorization: Bearer TOKEN"; nothing without such a header.
std::optional<QByteArray> bearerToken(const httplib::Request& request);
QByteArray body(const httplib::Request& request);

void send(httplib::Response& response, int status, const QByteArray& content, const char* contentType);
void sendJson(httplib::Response& response, int status, const QJsonObject& object);
// The two roads of the API differ in how an error names its details: "data" or "errors".
enum class ErrorForm { rpc, rest };
// {"error": {"code", "message", "data": [{"domain", "reason", "message"}]}}, the form that API clients understand.
QJsonObject apiErrorBody(int status, const QString& reason, const QString& message, ErrorForm form = ErrorForm::rpc);
void sendApiError(httplib::Response& response, int status, const char* reason, const QString& message,
                  ErrorForm form = ErrorForm::rpc);

// Never true early: the time it takes does not tell where the texts differ.
bool equalSecrets(const QByteArray& a, const QByteArray& b);
// So many random bytes in base64url, from the system's generator.
QByteArray randomSecret(qsizetype bytes = 32);

} // namespace quenby::localdrive
