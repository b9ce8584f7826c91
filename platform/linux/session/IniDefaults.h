// The settings in an INI file.
//
// Threads: the main thread. Values come back as they will after a restart: numbers and truth as text.
//
// A value that was set is on the disk after the turn of the event loop that set it, at the latest when this object is
// destroyed. Keys that another program changes in the file are noticed and told; its other keys are left alone.
#pragma once

#include "platform/Defaults.h"
#include "platform/linux/session/SettingsFile.h"

#include <QFileSystemWatcher>
#include <QSet>

namespace quenby {

class IniDefaults final : public Defaults {
    Q_OBJECT

public:
    explicit IniDefaults(const QString& path, QObject* parent = nullptr);
    ~IniDefaults() override;

    QVariant valueForKey(const QString& key) const override;
    void setValueForKey(const QString& key, const QVariant& value) override;
    void removeValueForKey(const QString& key) override;

private:
    void load();
    void change(const QString& key, const QVariant& value);
    void writeSoon();
    void write();
    // Takes over what the file says of the keys that were not changed here since.
    void adopt(const QVariantMap& stored);
    void fileMayHaveChanged();
    void watch();
    void setAsideDamaged();
    // Once for each sentence.
    void tell(const QString& sentence);

    SettingsFile file_;
    QVariantMap values_;
    QSet<QString> unwritten_; // keys whose value or absence is not on the disk yet
    QSet<QString> told_;
    QFileSystemWatcher watcher_;
    bool isMemoryOnly_ = false;
    bool isWriteScheduled_ = false;
};

} // namespace quenby
