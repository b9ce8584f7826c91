#include "localdrive/server/RpcEndpoint.h"

namespace quenby::localdrive {
namespace {

// What an address says that was closed: nobody who speaks JSON-RPC is expected any more.
constexpr char closedPage[] =
    "<!DOCTYPE html>\n<html lang=\"en\"><head><title>Error 404 (Not Found)</title></head>"
    "<body><p><b>404.</b> The requested URL was not found on this server.</p></body></html>\n";

} // namespace

bool RpcEndpoint::isOpenTo(const httplib::Request& request) const {
    return roads_.isRpcOpen() ||
           (!controlToken_.isEmpty() && equalSecrets(header(request, "X-Control-Token"), controlToken_));
}

void RpcEndpoint::addRoutes(HttpServer& server) {
    server.Post("/rpc",
                [this](const httplib::Request& request, httplib::Response& response) { answer(request, response); });
}

void RpcEndpoint::answer(const httplib::Request& request, httplib::Response& response) const {
    if (!isOpenTo(request))
        return send(response, 404, closedPage, "text/html; charset=UTF-8");
    const auto caller = authenticator_.byToken(request, response);
    if (!caller)
        return;
    CallContext context;
    static_cast<Caller&>(context) = *caller;
    const RpcReply reply = envelope_.answer(body(request), context);
    send(response, reply.status, reply.body, "application/json");
}

} // namespace quenby::localdrive
