// Replies that hold what people keep in the Drive.
#pragma once

#include "core/Error.h"
#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/store/DriveStore.h"

namespace quenby::localdrive {

// For contents that are saved under that name. Whatever people keep in the Drive is shown or saved, but never runs with
// the rights of our pages.
void setContentHeaders(httplib::Response& response, const QString& name);

// A file's content, or the range of it that was asked for, piece by piece while the client takes it.
void sendContent(const httplib::Request& request, httplib::Response& response, FileContent content);

// The error of a call, in the API's form.
void sendCallError(httplib::Response& response, const QJsonObject& error);
void sendCallError(httplib::Response& response, const Error& error);

} // namespace quenby::localdrive
