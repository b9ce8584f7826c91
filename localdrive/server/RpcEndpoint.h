// POST /rpc, and calls without a content at /upload/rpc, while the Drive has that road. Who knows the control token may
// take it even then: tests prepare a Drive so whose client must find it closed.
#pragma once

#include "localdrive/rpc/RpcEnvelope.h"
#include "localdrive/server/Authenticator.h"
#include "localdrive/server/Roads.h"
#include "localdrive/server/http/HttpServer.h"

namespace quenby::localdrive {

// Threads: any.
class RpcEndpoint {
public:
    // `controlToken`: empty when there is none.
    RpcEndpoint(const RpcMethods& methods, const Authenticator& authenticator, const Roads& roads,
                const QString& controlToken)
        : envelope_(methods)
        , authenticator_(authenticator)
        , roads_(roads)
        , controlToken_(controlToken.toUtf8()) {}

    void addRoutes(HttpServer& server);
    // While the road is closed, a page says that there is nothing.
    void answer(const httplib::Request& request, httplib::Response& response) const;
    bool isOpenTo(const httplib::Request& request) const;

private:
    const RpcEnvelope envelope_;
    const Authenticator& authenticator_;
    const Roads& roads_;
    const QByteArray controlToken_;
};

} // namespace quenby::localdrive
