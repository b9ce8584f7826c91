// libcurl's result codes as errors of ours.
#pragma once

#include "core/Error.h"

#include <curl/curl.h>

#include <QString>

namespace quenby {

// detail is what libcurl says about the case at hand (CURLOPT_ERRORBUFFER); it may be empty. Not for CURLE_OK.
Error errorForCurlCode(CURLcode code, const QString& detail, const QString& host);

} // namespace quenby
