// Keeps a second process out of a data folder. The kernel gives the lock back when the process ends, however that
// happens.
#pragma once

#include "core/Result.h"

#include <QString>

#include <memory>

namespace quenby::localdrive {

class FolderLock {
public:
    // Fails when another process has the folder, or this one has it already.
    static Result<std::unique_ptr<FolderLock>> take(const QString& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    explicit FolderLock(int descriptor)
        : descriptor_(descriptor) {}

    const int descriptor_;
};

} // namespace quenby::localdrive
