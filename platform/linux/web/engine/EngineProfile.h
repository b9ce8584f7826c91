// An account's storage and the rules for all of its pages, or those of a private session.
//
// Threads: the main thread. A profile outlives its pages.
#pragma once

#include "platform/linux/web/WebEngineModule.h"

#include <QWebEngineProfile>

namespace quenby {

// Kept on the disk; off the record without folders.
std::shared_ptr<QWebEngineProfile> makeEngineProfile(const WebProfileFolders& folders);

} // namespace quenby
