// The program's cache folders: each a named folder below the user's caches, with nothing in it that would be missed.
// Threads: any; a folder is one thread's at a time.
#pragma once

#include "core/Result.h"
#include "platform/Service.h"

namespace quenby {

class CacheFolders : public PlatformService {
public:
    // Absolute, whether or not the folder is there.
    virtual QString path(const QString& name) const = 0;
    // The folder, made where it is missing, for its owner only (mode 0700). Fails with the reason and what to do.
    virtual Result<QString> create(const QString& name) = 0;
    // Errors are ignored; a link in the folder's place is removed and not followed.
    virtual void remove(const QString& name) = 0;
};

} // namespace quenby
