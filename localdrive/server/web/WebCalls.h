// What the scripts of the pages ask for, below /web/. Everything is done by the API's own methods, on behalf of whoever
// is signed in to the pages.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageGuard.h"

#include <functional>

namespace quenby::localdrive {

// Threads: any.
class WebCalls {
public:
    WebCalls(DriveStore& store, const RpcMethods& methods, const PageGuard& guard)
        : store_(store)
        , methods_(methods)
        , guard_(guard) {}

    void addRoutes(HttpServer& server);

private:
    using Answer = std::function<void(const QJsonObject& asked, const Caller& caller, httplib::Response& response)>;

    void on(HttpServer& server, const char* path, const Answer& answer) const;
    // One method's result as the reply; its error as a sentence for people.
    void call(const QString& method, const QJsonObject& params, const Caller& caller,
              httplib::Response& response) const;
    // The same method for each of "ids"; those that failed are told one by one.
    void callEach(const QString& method, const QJsonObject& asked, const Caller& caller,
                  httplib::Response& response) const;
    void tellState(const httplib::Request& request, httplib::Response& response) const;
    void upload(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read) const;

    DriveStore& store_;
    const RpcMethods& methods_;
    const PageGuard& guard_;
};

} // namespace quenby::localdrive
