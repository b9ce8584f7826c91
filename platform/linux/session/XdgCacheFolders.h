// Cache folders below the profile's folder in the user's caches.
#pragma once

#include "platform/CacheFolders.h"

namespace quenby {

class XdgCacheFolders final : public CacheFolders {
public:
    // Absolute; made with the first folder in it.
    explicit XdgCacheFolders(QString base)
        : base_(std::move(base)) {}

    // A name is one component of a path; create() and remove() take no other.
    QString path(const QString& name) const override;
    Result<QString> create(const QString& name) override;
    void remove(const QString& name) override;

private:
    QString base_;
};

} // namespace quenby
