#include "localdrive/server/rest/RestEndpoint.h"

namespace quenby::localdrive {

void RestEndpoint::addRoutes(HttpServer& server) {
    const auto answering = [this](const httplib::Request& request, httplib::Response& response) {
        answer(request, response);
    };
    const std::string all = std::string(restBase) + "(/[\\s\\S]*)?"; // a parameter may hold line breaks
    server.Get(all, answering);
    server.Post(all, answering);
    server.Put(all, answering);
    server.Patch(all, answering);
    server.Delete(all, answering);
}

void RestEndpoint::answer(const httplib::Request& request, httplib::Response& response) {
    // The target as it was sent: in the library's path an encoded slash would look like any other.
    const QByteArray verb = QByteArray::fromStdString(request.method);
    const QByteArray target = QByteArray::fromStdString(request.target);
    const RestTarget parsed = RestTarget::parse(target);
    const auto method = restMethod(verb, parsed.path);
    const bool isFile = method && method->name == QLatin1String("drive.files.get");
    if (isFile && parsed.parameter("alt") == QLatin1String("media"))
        return contents_.content(method->pathParams[QLatin1String("fileId")].toString(), request, response);
    // The pages' scripts may read what is known of a file.
    const auto caller = isFile ? authenticator_.byTokenOrPage(request, response, ErrorForm::rest)
                               : authenticator_.byToken(request, response, ErrorForm::rest);
    if (!caller)
        return;
    CallContext context;
    static_cast<Caller&>(context) = *caller;
    sendRestAnswer(response, answerRestCall(methods_, verb, target, body(request), context));
}

} // namespace quenby::localdrive
