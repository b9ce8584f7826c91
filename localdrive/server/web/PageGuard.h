// Who looks at the pages, and whether what comes from a page's script really comes from one of ours.
//
// Each page carries a key in its body's data-key, which its scripts send back in X-Web-Key. Another site can neither
// read it nor send such a header. It belongs to the browser's session and is good as long as that, also when the
// server was started anew meanwhile.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpMessages.h"

#include <QByteArray>

#include <optional>

namespace quenby::localdrive {

// False for requests that a browser sends on behalf of another site.
bool comesFromHere(const httplib::Request& request);

// Threads: any.
class PageGuard {
public:
    // `secret` must be the same for the life of the Drive.
    PageGuard(const Authenticator& authenticator, QByteArray secret);

    // For pages: who is signed in. Otherwise nothing, and the response leads to the sign-in page and from there back.
    std::optional<Caller> visitor(const httplib::Request& request, httplib::Response& response) const;
    // The key for the page that answers this request.
    QByteArray key(const httplib::Request& request) const;

    // For calls of scripts: on whose behalf. Otherwise nothing, and the response is an error in JSON: 401 when nobody
    // is signed in any more, 403 for other sites and wrong keys.
    std::optional<Caller> caller(const httplib::Request& request, httplib::Response& response) const;

private:
    const Authenticator& authenticator_;
    const QByteArray secret_;
};

} // namespace quenby::localdrive
