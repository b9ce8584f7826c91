#include "core/Endpoints.h"

namespace quenby {
namespace {

// What both services have in common, below their hosts.
Endpoints at(const QUrl& api, const QUrl& accounts, const QUrl& web, const QString& scopeBase) {
    const auto under = [](QUrl base, const char* path) {
        base.setPath(QString::fromLatin1(path));
        return base;
    };
    Endpoints endpoints;
    endpoints.rpcURL = under(api, "/rpc");
    endpoints.rpcUploadURL = under(api, "/upload/rpc");
    endpoints.restURL = under(api, "/drive/v2");
    endpoints.restUploadURL = under(api, "/upload/drive/v2");
    endpoints.restBatchURL = under(api, "/batch/drive/v2");
    endpoints.userInfoURL = under(api, "/oauth2/v3/userinfo");
    endpoints.downloadBaseURL = under(api, "/drive/v2/files");
    endpoints.webURL = under(web, "/");
    endpoints.sharingPageURL = under(web, "/sharing/share");
    endpoints.authorizationURL = under(accounts, "/o/oauth2/auth");
    endpoints.tokenURL = under(accounts, "/o/oauth2/token");
    endpoints.revocationURL = under(accounts, "/o/oauth2/revoke");
    endpoints.emailScope = scopeBase + QStringLiteral("/auth/userinfo.email");
    endpoints.profileScope = scopeBase + QStringLiteral("/auth/userinfo.profile");
    endpoints.driveScope = scopeBase + QStringLiteral("/auth/drive");
    endpoints.driveFileScope = endpoints.driveScope + QStringLiteral(".file");
    endpoints.jwtBearerGrantType = QStringLiteral("urn:ietf:params:oauth:grant-type:jwt-bearer");
    return endpoints;
}

} // namespace

Endpoints Endpoints::provider() {
    const QString apiHost = QStringLiteral("https://www.googleapis.com");
    Endpoints endpoints = at(QUrl(apiHost), QUrl(QStringLiteral("https://accounts.google.com")),
                             QUrl(QStringLiteral("https://drive.google.com")), apiHost);
    // It refuses sign-ins in web views, and gives no codes in page titles any more.
    endpoints.signInPlace = SignInPlace::browser;
    endpoints.keychainItemName = QStringLiteral("Drive: Google Drive");
    endpoints.providerDomain = QStringLiteral("google.com");
    endpoints.webPlaces = WebPlaces::provider();
    endpoints.clientConsoleURL = QUrl(QStringLiteral("https://console.cloud.google.com/apis/credentials"));
    return endpoints;
}

Endpoints Endpoints::localDrive(const QUrl& base) {
    // The scopes are names, not addresses: the local Drive knows them by the provider's spelling.
    Endpoints endpoints = at(base, base, base, QStringLiteral("https://www.googleapis.com"));
    endpoints.keychainItemName = QStringLiteral("Drive: Local Drive");
    endpoints.providerDomain = base.host();
    endpoints.webPlaces = WebPlaces::localDrive(base);
    endpoints.isLocal = true;
    return endpoints;
}

} // namespace quenby
