// Which of the addresses that come with a change may be asked for a picture, and on whose behalf.
#pragma once

#include "core/Endpoints.h"

#include <QUrl>

namespace quenby {

enum class PictureAddress {
    refused,   // no address, not https, or with a password in it
    foreign,   // to be fetched as by a stranger
    ofTheDrive // the Drive's own: it may see the access token
};

// Own is only what has the scheme, host and port of one of the endpoints. With a local Drive, http to this computer
// counts as https does.
PictureAddress pictureAddress(const QUrl& url, const Endpoints& endpoints);

} // namespace quenby
