// A file that a page sends: the body of one request, written to disk as it arrives.
#pragma once

#include "core/Result.h"
#include "localdrive/store/BlobStore.h"

#include <httplib.h>

namespace quenby::localdrive {

// An unread body would be taken for the next request.
void discardBody(const httplib::ContentReader& read);

// What the browser says; where it does not know, what the name tells.
QString mediaTypeOf(const QString& name, const QByteArray& said);

// Threads: one at a time. What was not adopted into the Drive goes with the object.
class WebUpload {
public:
    explicit WebUpload(BlobStore& blobs);
    ~WebUpload();
    WebUpload(const WebUpload&) = delete;
    WebUpload& operator=(const WebUpload&) = delete;

    // Reads the body to its end; called once. Fails when the disk is full, and when fewer bytes come than `length`.
    Result<StagedBlob> receive(const httplib::ContentReader& read, qint64 length);

private:
    BlobStore& blobs_;
    const QString part_;
};

} // namespace quenby::localdrive
