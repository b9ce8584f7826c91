// What a fetcher asks of whoever can authorize requests. Implemented by the OAuth 2.0 authorizer.
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"
#include "http/URLRequest.h"

#include <functional>
#include <memory>

namespace quenby {

// Threads: an authorizer lives on one thread, and so do the fetchers that it authorizes for; those of other threads
// go through authorizeRequest alone, which may be called from any thread.
class Authorizer {
public:
    // The request with its Authorization header, or as it was, and the error that kept it from being authorized.
    using AuthorizeHandler = std::function<void(const URLRequest& request, const MaybeError& error)>;

    virtual ~Authorizer() = default;

    virtual bool isAuthorizedRequest(const URLRequest& request) const = 0;
    // Calls back on the context's thread; refreshes the access token first when that is due. Cancelling the ticket
    // is stopAuthorizationForRequest.
    virtual CompletionTicket authorizeRequest(const URLRequest& request, QObject* context,
                                              AuthorizeHandler handler) = 0;
    // Forgets the access token that a server has just refused; whether the next authorization will fetch a new one.
    // The refused request tells which token that was, so that fifty refusals of one token lead to one refresh.
    virtual bool primeForRefresh(const URLRequest& refused) = 0;
    virtual QString userEmail() const = 0;
};

} // namespace quenby
