// The pages that the browser gets from a sign-in's port. Each stands for itself: no script, nothing loaded, and nothing
// of the request repeated in it.
#pragma once

#include "oauth2/browser/LoopbackRequest.h"

namespace quenby::loopback {

// Why there is an error page for what is no request yet.
enum class Trouble { headTooLarge, tooSlow };

// A whole HTTP/1.1 response, after which the connection ends.
QByteArray responseTo(Verdict verdict);
QByteArray responseTo(Trouble trouble);

} // namespace quenby::loopback
