#include "platform/linux/web/engine/DownloadError.h"

#include <cerrno>

namespace quenby {
namespace {

Error fileError(int code, const QString& sentence) {
    return Error(errorDomain::posix, code, {{errorKey::reason, sentence}});
}

Error urlError(URLErrorCode code, const QString& sentence) { return Error(code, {{errorKey::reason, sentence}}); }

} // namespace

Error downloadError(QWebEngineDownloadRequest::DownloadInterruptReason reason, const QString& host) {
    using Reason = QWebEngineDownloadRequest;
    const QString server = host.isEmpty() ? QStringLiteral("the server") : host;
    switch (reason) {
    case Reason::FileNoSpace:
        return fileError(ENOSPC, QStringLiteral("The disk is full. Make room on it and download the file again."));
    case Reason::FileAccessDenied:
        return fileError(EACCES, QStringLiteral("The file may not be written to its folder. Choose another folder."));
    case Reason::FileNameTooLong:
        return fileError(ENAMETOOLONG, QStringLiteral("The file's name is too long. Save it under a shorter one."));
    case Reason::FileTooLarge:
        return fileError(EFBIG, QStringLiteral("The file is too large for the disk it is saved to. Choose another."));
    case Reason::FileFailed:
    case Reason::FileTransientError:
    case Reason::FileVirusInfected:
    case Reason::FileBlocked:
    case Reason::FileSecurityCheckFailed:
    case Reason::FileTooShort:
    case Reason::FileHashMismatch:
        return fileError(EIO, QStringLiteral("The file could not be written. Check the folder and try again."));
    case Reason::NetworkTimeout:
        return urlError(URLErrorCode::timedOut,
                        QStringLiteral("%1 did not answer in time. Check the network and try again.").arg(server));
    case Reason::NetworkServerDown:
    case Reason::ServerUnreachable:
        return urlError(
            URLErrorCode::cannotConnectToHost,
            QStringLiteral("No connection to %1 could be made. Check the network and try again.").arg(server));
    case Reason::ServerUnauthorized:
    case Reason::ServerForbidden:
        return urlError(URLErrorCode::badServerResponse,
                        QStringLiteral("%1 refused to send the file to this account.").arg(server));
    case Reason::ServerBadContent:
        return urlError(URLErrorCode::badServerResponse,
                        QStringLiteral("%1 does not have the file. Reload the page and try again.").arg(server));
    case Reason::ServerFailed:
    case Reason::NetworkInvalidRequest:
        return urlError(URLErrorCode::badServerResponse,
                        QStringLiteral("%1 could not send the file. Try again later.").arg(server));
    case Reason::ServerCertProblem:
        return urlError(URLErrorCode::serverCertificateUntrusted,
                        QStringLiteral("The connection to %1 is not secure, so the file was not fetched.").arg(server));
    case Reason::NetworkFailed:
    case Reason::NetworkDisconnected:
        break;
    default: // among them reasons that the engine has no name for, such as a file that ended too soon
        break;
    }
    return urlError(URLErrorCode::networkConnectionLost,
                    QStringLiteral("The connection to %1 was lost before the whole file was there. Check the network "
                                   "and download it again.")
                        .arg(server));
}

} // namespace quenby
