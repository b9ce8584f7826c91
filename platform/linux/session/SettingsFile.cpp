#include "platform/linux/session/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringDecoder>

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

// Far beyond any settings; whatever is larger is something else.
constexpr qint64 largestFile = 16 * 1024 * 1024;
constexpr int largestNumberAside = 10000;

// The end of the line that starts at this place. As the reader of the format has it, a backslash or an open quotation
// mark carries a value over the end of its line. -1: a quotation mark that is never closed.
qsizetype endOfLine(const QByteArray& bytes, qsizetype begin) {
    bool isQuoted = false;
    for (qsizetype i = begin; i < bytes.size(); ++i) {
        const char c = bytes.at(i);
        if (c == '\\')
            ++i;
        else if (c == '"')
            isQuoted = !isQuoted;
        else if (c == '\n' && !isQuoted)
            return i;
    }
    return isQuoted ? -1 : bytes.size();
}

bool isSettingsLine(const QByteArray& trimmedLine) {
    if (trimmedLine.startsWith('['))
        return trimmedLine.indexOf(']') > 0;
    return trimmedLine.indexOf('=') > 0;
}

} // namespace

bool isSettingsText(const QByteArray& bytes) {
    if (bytes.contains('\0'))
        return false;
    QStringDecoder decoder(QStringDecoder::Utf8);
    [[maybe_unused]] const QString text = decoder(bytes);
    if (decoder.hasError())
        return false;
    qsizetype begin = bytes.startsWith("\xef\xbb\xbf") ? 3 : 0; // a byte order mark
    while (begin < bytes.size()) {
        qsizetype newLine = bytes.indexOf('\n', begin);
        if (newLine < 0)
            newLine = bytes.size();
        const QByteArray first = bytes.mid(begin, newLine - begin).trimmed();
        if (first.isEmpty() || first.startsWith(';')) {
            begin = newLine + 1;
            continue;
        }
        const qsizetype end = endOfLine(bytes, begin);
        // The reader skips a line with "#", but does not know it for a comment: an open quotation mark in it would
        // swallow the lines below.
        const bool isSound = first.startsWith('#') ? end == newLine : end >= 0 && isSettingsLine(first);
        if (!isSound)
            return false;
        begin = end + 1;
    }
    return true;
}

SettingsFile::State SettingsFile::state() const {
    struct ::stat about {};
    if (::stat(QFile::encodeName(path_).constData(), &about) != 0)
        return errno == ENOENT ? State::absent : State::unreadable;
    if (!S_ISREG(about.st_mode))
        return State::unreadable;
    if (about.st_size > largestFile)
        return State::damaged;
    QFile file(path_);
    if (!file.open(QIODevice::ReadOnly))
        return State::unreadable;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return State::unreadable;
    return isSettingsText(bytes) ? State::sound : State::damaged;
}

QVariantMap SettingsFile::read() const {
    const QSettings settings(path_, QSettings::IniFormat);
    QVariantMap values;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys)
        values.insert(key, settings.value(key));
    return values;
}

bool SettingsFile::write(const QVariantMap& values, const QSet<QString>& keys) {
    QDir().mkpath(QFileInfo(path_).path());
    // A file that is replaced keeps its mode, so this is the mode of every later version, too.
    const int file = ::open(QFile::encodeName(path_).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    ::fchmod(file, 0600);
    ::close(file);
    QSettings settings(path_, QSettings::IniFormat);
    for (const QString& key : keys) {
        if (values.contains(key))
            settings.setValue(key, values.value(key));
        else
            settings.remove(key);
    }
    settings.sync();
    // Lines that only this program's own check lets pass (a comment with "#") are not worth an alarm.
    return settings.status() != QSettings::AccessError;
}

QString SettingsFile::setAside() {
    for (int number = 1; number < largestNumberAside; ++number) {
        const QString aside = path_ + QStringLiteral(".damaged-") + QString::number(number);
        // A link first: unlike renaming, it never takes the place of a file that was set aside before.
        if (::link(QFile::encodeName(path_).constData(), QFile::encodeName(aside).constData()) == 0)
            return ::unlink(QFile::encodeName(path_).constData()) == 0 ? aside : QString();
        if (errno == EEXIST)
            continue;
        // A file system without hard links.
        if (QFileInfo::exists(aside))
            continue;
        return QFile::rename(path_, aside) ? aside : QString();
    }
    return {};
}

} // namespace quenby
