// A request that waits to be authorized. The gate stands for the caller: its context, its thread and its function.
#pragma once

#include "core/CompletionGate.h"
#include "http/Authorizer.h"

namespace quenby {

struct GTMOAuth2AuthorizationArgs {
    using CompletionHandler = CompletionGate<const URLRequest&, const MaybeError&>;

    static GTMOAuth2AuthorizationArgs argsWithRequest(const URLRequest& request, QObject* context,
                                                      Authorizer::AuthorizeHandler handler) {
        return {request, CompletionHandler(context, std::move(handler)), std::nullopt};
    }

    URLRequest request;
    CompletionHandler completionHandler;
    MaybeError error;
};

} // namespace quenby
