// What happens at an upload's location, on either road: PUT carries bytes or asks how many are held.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/fault/Statistics.h"
#include "localdrive/server/upload/ContentRange.h"
#include "localdrive/server/upload/UploadSessions.h"

namespace quenby::localdrive {

// An unread body would be taken for the next request. Returns its length.
qint64 discardUpload(const httplib::ContentReader& read);

// The length that an announcing request gives the content; 400 without one.
Result<qint64> announcedLength(const httplib::Request& request);

// An error under its HTTP status, in the form of the road.
void sendUploadError(httplib::Response& response, const Error& error, UploadRoad road);

// Threads: any.
class UploadReceiver {
public:
    UploadReceiver(UploadSessions& sessions, const RpcMethods& methods, const Authenticator& authenticator,
                   Statistics& statistics)
        : sessions_(sessions)
        , methods_(methods)
        , authenticator_(authenticator)
        , statistics_(statistics) {}

    // Begins an upload that may be made, and answers with its location: `address`, on this server, with the upload id
    // added to its query. Else the answer is the error.
    void announce(const UploadFacts& facts, const QString& address, httplib::Response& response);
    // `road`: of the address that was asked; it gives errors their form when the upload is unknown.
    void put(UploadRoad road, const httplib::Request& request, httplib::Response& response,
             const httplib::ContentReader& read);

private:
    Result<ContentRange> rangeOf(const httplib::Request& request, const UploadFacts& facts) const;
    Result<void> receive(UploadSession& session, const ContentRange& range, const httplib::ContentReader& read);
    void reportHeld(UploadSession& session, httplib::Response& response) const;
    void finish(const QByteArray& uploadId, UploadSession& session, httplib::Response& response);

    UploadSessions& sessions_;
    const RpcMethods& methods_;
    const Authenticator& authenticator_;
    Statistics& statistics_;
};

} // namespace quenby::localdrive
