// An authorizer that grants or refuses as the test says, at once or when the test lets it.
#pragma once

#include "core/CompletionGate.h"
#include "http/Authorizer.h"

#include <vector>

namespace quenby::testing {

// Tokens "token0", "token1", … each good until it is refused.
class FakeAuthorizer final : public Authorizer {
public:
    bool canRefresh = false;
    MaybeError error;
    bool isHolding = false;
    int primed = 0;
    std::vector<CompletionGate<URLRequest, MaybeError>> held;

    bool isAuthorizedRequest(const URLRequest& request) const override {
        return request.headers.contains("Authorization");
    }
    CompletionTicket authorizeRequest(const URLRequest& request, QObject* context, AuthorizeHandler handler) override {
        CompletionGate<URLRequest, MaybeError> gate(context, std::move(handler));
        URLRequest authorized = request;
        if (!error)
            authorized.headers.set("Authorization", "Bearer token" + QByteArray::number(primed));
        if (isHolding)
            held.push_back(gate);
        else
            gate.deliver(authorized, error);
        return gate.ticket();
    }
    bool primeForRefresh(const URLRequest& refused) override {
        if (!refused.headers.contains("Authorization"))
            qFatal("the refused request carries no token");
        ++primed;
        return canRefresh;
    }
    QString userEmail() const override { return {}; }
};

} // namespace quenby::testing
