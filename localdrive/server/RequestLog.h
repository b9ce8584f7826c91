// One line a request, or an event of the activity, on standard error, free of secrets.
#pragma once

#include <httplib.h>

#include <QString>

namespace quenby::localdrive {

// Threads: any; a line is never mixed with another.
void logRequest(const httplib::Request& request, const httplib::Response& response);
void logEvent(const QString& event);

} // namespace quenby::localdrive
