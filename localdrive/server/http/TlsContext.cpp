#include "localdrive/server/http/TlsContext.h"

#include <QFile>

namespace quenby::localdrive {

Result<std::shared_ptr<SSL_CTX>> makeTlsContext(const TlsFiles& files) {
    std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    const QByteArray certificate = QFile::encodeName(files.certificate);
    const QByteArray key = QFile::encodeName(files.key);
    if (context && SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION) == 1 &&
        SSL_CTX_use_certificate_chain_file(context.get(), certificate.constData()) == 1 &&
        SSL_CTX_use_PrivateKey_file(context.get(), key.constData(), SSL_FILETYPE_PEM) == 1 &&
        SSL_CTX_check_private_key(context.get()) == 1)
        return context;
    return Error(errorDomain::posix, EINVAL,
                 {{errorKey::reason, QStringLiteral("%1 and %2 are no PEM certificate and key that belong together.")
                                         .arg(files.certificate, files.key)}});
}

} // namespace quenby::localdrive
