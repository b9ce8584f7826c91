// One settings file on the disk, without any memory of it: what state it is in, what it says, and how keys are changed
// in it. The form is that of QSettings::IniFormat.
//
// Threads: one at a time.
#pragma once

#include <QSet>
#include <QString>
#include <QVariantMap>

namespace quenby {

class SettingsFile {
public:
    enum class State {
        absent,
        sound,
        damaged,    // its text is no settings file
        unreadable, // no permission, or no regular file
    };

    explicit SettingsFile(QString path)
        : path_(std::move(path)) {}

    const QString& path() const { return path_; }
    State state() const;
    // Every key; only of a sound file.
    QVariantMap read() const;
    // Sets the keys to their values, and removes those that have none; every other key in the file stays. The file is
    // replaced in one step and is its owner's alone (mode 0600). Only for a file that is absent or sound.
    bool write(const QVariantMap& values, const QSet<QString>& keys);
    // Moves the file to <path>.damaged-<n>, and answers the new path; empty when that failed.
    QString setAside();

private:
    QString path_;
};

// Whether the bytes are lines of settings: sections, comments, and keys with values.
bool isSettingsText(const QByteArray& bytes);

} // namespace quenby
