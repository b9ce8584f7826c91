#include "localdrive/server/RpcEndpoint.h"

namespace quenby::localdrive {

void RpcEndpoint::addRoutes(HttpServer& server) {
    server.Post("/rpc",
                [this](const httplib::Request& request, httplib::Response& response) { answer(request, response); });
}

void RpcEndpoint::answer(const httplib::Request& request, httplib::Response& response) const {
    const auto caller = authenticator_.byToken(request, response);
    if (!caller)
        return;
    CallContext context;
    static_cast<Caller&>(context) = *caller;
    const RpcReply reply = envelope_.answer(body(request), context);
    send(response, reply.status, reply.body, "application/json");
}

} // namespace quenby::localdrive
