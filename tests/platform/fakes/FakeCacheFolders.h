// Cache folders below a temporary folder, which goes with this object.
#pragma once

#include "platform/CacheFolders.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

namespace quenby::testing {

class FakeCacheFolders final : public CacheFolders {
public:
    QString path(const QString& name) const override { return folder_.filePath(name); }

    Result<QString> create(const QString& name) override {
        if (isFailing_)
            return Error(errorDomain::posix, 28, {{errorKey::reason, QStringLiteral("The disk is full.")}});
        created_.append(name);
        const QString folder = path(name);
        if (QFileInfo(folder).isSymLink())
            QFile::remove(folder);
        if (!QDir().mkpath(folder) ||
            !QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            return Error(errorDomain::posix, 13, {{errorKey::reason, QStringLiteral("Cannot make the folder.")}});
        return folder;
    }

    void remove(const QString& name) override {
        removed_.append(name);
        if (QFileInfo(path(name)).isDir() && !QFileInfo(path(name)).isSymLink())
            QDir(path(name)).removeRecursively();
        else
            QFile::remove(path(name));
    }

    // For tests: create() fails from now on; the names in the order in which they were made and removed.
    void setFailing(bool isFailing) { isFailing_ = isFailing; }
    const QStringList& created() const { return created_; }
    const QStringList& removed() const { return removed_; }

private:
    QTemporaryDir folder_;
    QStringList created_;
    QStringList removed_;
    bool isFailing_ = false;
};

} // namespace quenby::testing
