// What the engine says about a page that could not be loaded, as one of our errors.
#pragma once

#include "core/Error.h"

class QWebEngineLoadingInfo;

namespace quenby {

// errorDomain::url, with errorKey::failingURL and a sentence for people that holds no address but the host.
Error loadError(const QWebEngineLoadingInfo& info);

} // namespace quenby
