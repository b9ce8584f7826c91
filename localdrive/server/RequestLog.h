// One line a request on standard error, free of secrets.
#pragma once

#include <httplib.h>

namespace quenby::localdrive {

// Threads: any; a line is never mixed with another.
void logRequest(const httplib::Request& request, const httplib::Response& response);

} // namespace quenby::localdrive
