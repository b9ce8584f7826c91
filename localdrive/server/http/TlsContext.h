// The certificate and key that https is served with.
#pragma once

#include "core/Result.h"
#include "localdrive/server/ServerOptions.h"

#include <openssl/ssl.h>

#include <memory>

namespace quenby::localdrive {

// TLS 1.2 and newer. Fails when the files hold no certificate and key that fit each other.
Result<std::shared_ptr<SSL_CTX>> makeTlsContext(const TlsFiles& files);

} // namespace quenby::localdrive
