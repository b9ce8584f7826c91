#include "platform/linux/screenshots/Originals.h"

#include <algorithm>

namespace quenby {

bool Originals::isOriginal(const QByteArray& path, const FileStamp& stamp) {
    for (const Original& other : std::as_const(byName_)) {
        if (other.stamp.isSameFile(stamp))
            return other.path == path;
    }
    const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    const auto known = byName_.constFind(name);
    if (known != byName_.cend() && (known->path != path || known->isThere))
        return false;
    byName_.insert(name, {path, stamp});
    return true;
}

void Originals::forgetPlacesBut(const QSet<QByteArray>& paths) {
    for (Original& original : byName_)
        original.isThere = paths.contains(original.path);
}

} // namespace quenby
