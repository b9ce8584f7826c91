// A ZIP archive in memory, its members stored without compression (APPNOTE 4.3).
#pragma once

#include <QByteArray>

namespace quenby::localdrive {

class ZipArchive {
public:
    void add(const QByteArray& name, const QByteArray& content);
    QByteArray bytes() const;

private:
    QByteArray members_;
    QByteArray directory_;
    quint16 count_ = 0;
};

} // namespace quenby::localdrive
