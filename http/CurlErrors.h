// libcurl's result codes as errors of ours.
#pragma once

#include "core/Error.h"

#include <curl/curl.h>

#include <QString>

namespace quenby {

// detail is what libcurl says about the case at hand (CURLOPT_ERRORBUFFER); it may be empty. The proxy is a host and a
// port, empty when there is none or it is not known. Not for CURLE_OK.
Error errorForCurlCode(CURLcode code, const QString& detail, const QString& host, const QString& proxy = {});

} // namespace quenby
