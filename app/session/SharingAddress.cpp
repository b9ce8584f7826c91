#include "app/session/SharingAddress.h"

#include "core/Endpoints.h"
#include "oauth2/OAuth2Encoding.h"

namespace quenby {

QString sharingAddress(const Endpoints& endpoints, const QString& refreshToken) {
    return endpoints.sharingPageURL.toString(QUrl::FullyEncoded) +
           QStringLiteral("?shareUiType=default&authuser=0&foreignService=googledrivesync&access_token=") +
           oauth2::encodedOAuthValueForString(refreshToken) +
           QStringLiteral("&subapp=10&shareProtocolVersion=2&gaiaService=wise&theme=2&client=desktop&command=settings"
                          "&hl=en&popupWindowsEnabled=false&id=");
}

} // namespace quenby
