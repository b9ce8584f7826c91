// Links of the web application that lead to a file instead of a page.
#pragma once

#include "core/WebPlaces.h"

namespace quenby {

// Of a native document in another form, or the archive that several files were packed into.
bool isExportLink(const QUrl& request, const WebPlaces& places);

} // namespace quenby
