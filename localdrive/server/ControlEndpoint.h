// /control/...: where tests order faults and ask what happened. There only when the server was started with --control.
#pragma once

#include "localdrive/server/fault/FaultPlan.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/oauth/TokenEndpoint.h"
#include "localdrive/server/upload/UploadSessions.h"

#include <functional>

namespace quenby::localdrive {

// Threads: any.
class ControlEndpoint {
public:
    struct Parts {
        FaultPlan& plan;
        Statistics& statistics;
        UploadSessions& uploads;
        TokenStore& tokens;
        Roads& roads;
        DriveStore& store;
        const TokenEndpoint& tokenAnswers;
        Account owner;
        std::function<void()> shutdown; // from any thread; returns at once
    };

    ControlEndpoint(const QString& token, Parts parts)
        : token_(token.toUtf8())
        , parts_(std::move(parts)) {}

    void addRoutes(HttpServer& server);

private:
    void addFaults(const httplib::Request& request, httplib::Response& response);
    void state(httplib::Response& response);
    void setService(const httplib::Request& request, httplib::Response& response);
    void grant(const httplib::Request& request, httplib::Response& response);

    const QByteArray token_;
    const Parts parts_;
};

} // namespace quenby::localdrive
