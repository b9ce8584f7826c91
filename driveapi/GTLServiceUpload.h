// The fetcher that sends a query's media.
#pragma once

#include "core/Result.h"
#include "driveapi/GTLUploadParameters.h"
#include "http/GTMHTTPUploadFetcher.h"

namespace quenby {

// Resumes at the location when the parameters name one, else announces a new upload of the data or the file with the
// request. An error when the media cannot be read; nothing has been sent then.
Result<std::shared_ptr<GTMHTTPUploadFetcher>>
uploadFetcherWithRequest(const URLRequest& request, const GTLUploadParameters& parameters, quint64 chunkSize,
                         const std::shared_ptr<GTMHTTPFetcherService>& fetcherService);

} // namespace quenby
