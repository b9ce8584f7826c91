// The address of the Drive's sharing page.
#pragma once

#include <QString>

namespace quenby {

struct Endpoints;

// All of it but the file's identifier, which is to be appended. It carries the refresh token: a secret, to be shown and
// logged nowhere.
QString sharingAddress(const Endpoints& endpoints, const QString& refreshToken);

} // namespace quenby
