// A ZIP archive in memory, for documents that are one.
#pragma once

#include "localdrive/server/docs/ZipWriter.h"

namespace quenby::localdrive {

class ZipArchive {
public:
    void add(const QByteArray& name, const QByteArray& content) { writer_.add(name, content); }
    // Once, at the end.
    QByteArray bytes() {
        writer_.finish();
        return bytes_;
    }

private:
    QByteArray bytes_;
    ZipWriter writer_{[this](QByteArrayView piece) {
        bytes_.append(piece);
        return true;
    }};
};

} // namespace quenby::localdrive
