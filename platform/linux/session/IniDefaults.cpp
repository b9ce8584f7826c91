#include "platform/linux/session/IniDefaults.h"

#include <QDir>
#include <QFileInfo>

namespace quenby {
namespace {

// A settings file knows only text, and lists and maps of what it is given.
QVariant asStored(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return value.toString();
    default:
        return value;
    }
}

// A list of one text is stored like the text itself.
bool meanTheSame(const QVariant& one, const QVariant& other) {
    if (one == other)
        return true;
    const auto isText = [](const QVariant& value) {
        return value.typeId() == QMetaType::QString || value.typeId() == QMetaType::QStringList;
    };
    return isText(one) && isText(other) && one.toStringList() == other.toStringList();
}

} // namespace

IniDefaults::IniDefaults(const QString& path, QObject* parent)
    : file_(path) {
    setParent(parent);
    load();
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, &IniDefaults::fileMayHaveChanged);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &IniDefaults::fileMayHaveChanged);
    watch();
}

IniDefaults::~IniDefaults() { write(); }

QVariant IniDefaults::valueForKey(const QString& key) const { return values_.value(key); }

void IniDefaults::setValueForKey(const QString& key, const QVariant& value) { change(key, asStored(value)); }

void IniDefaults::removeValueForKey(const QString& key) { change(key, {}); }

void IniDefaults::change(const QString& key, const QVariant& value) {
    const bool isSame =
        value.isValid() ? values_.contains(key) && meanTheSame(values_.value(key), value) : !values_.contains(key);
    if (isSame)
        return;
    if (value.isValid())
        values_.insert(key, value);
    else
        values_.remove(key);
    unwritten_.insert(key);
    writeSoon();
    Q_EMIT changed(key);
}

void IniDefaults::load() {
    switch (file_.state()) {
    case SettingsFile::State::absent:
        return;
    case SettingsFile::State::sound:
        values_ = file_.read();
        return;
    case SettingsFile::State::damaged:
        setAsideDamaged();
        return;
    case SettingsFile::State::unreadable:
        isMemoryOnly_ = true;
        tell(QStringLiteral("The settings cannot be read from %1. Quenby uses its defaults, and what you change holds "
                            "only until it quits. Make it a file that you may read and write, and start Quenby again.")
                 .arg(file_.path()));
        return;
    }
}

// Also when the first attempt fails, what is in memory stays and holds.
void IniDefaults::setAsideDamaged() {
    const QString aside = file_.setAside();
    isMemoryOnly_ = aside.isEmpty();
    if (isMemoryOnly_)
        tell(
            QStringLiteral("The settings file %1 is damaged and cannot be moved away. What you change holds only until "
                           "Quenby quits. Repair the file or move it away, and start Quenby again.")
                .arg(file_.path()));
    else
        tell(
            QStringLiteral("The settings file was damaged. It is kept as %1, and Quenby goes on with the settings that "
                           "it knows.")
                .arg(aside));
}

void IniDefaults::writeSoon() {
    if (isWriteScheduled_ || isMemoryOnly_)
        return;
    isWriteScheduled_ = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            isWriteScheduled_ = false;
            write();
        },
        Qt::QueuedConnection);
}

void IniDefaults::write() {
    if (unwritten_.isEmpty() || isMemoryOnly_)
        return;
    SettingsFile::State state = file_.state();
    if (state == SettingsFile::State::damaged) {
        setAsideDamaged();
        if (isMemoryOnly_)
            return;
        state = SettingsFile::State::absent;
    }
    // What is gone from the disk is not forgotten here.
    if (state == SettingsFile::State::absent)
        unwritten_.unite(QSet<QString>(values_.keyBegin(), values_.keyEnd()));
    if (state == SettingsFile::State::unreadable || !file_.write(values_, unwritten_)) {
        tell(QStringLiteral("The settings cannot be written to %1. What you change holds only until Quenby quits. Make "
                            "sure that there is room on the disk and that you may write to the folder.")
                 .arg(file_.path()));
        return;
    }
    unwritten_.clear();
    watch();
    adopt(file_.read());
}

void IniDefaults::adopt(const QVariantMap& stored) {
    QSet<QString> keys(values_.keyBegin(), values_.keyEnd());
    keys.unite(QSet<QString>(stored.keyBegin(), stored.keyEnd()));
    keys.subtract(unwritten_);
    QStringList different;
    for (const QString& key : std::as_const(keys)) {
        if (values_.contains(key) && stored.contains(key) && meanTheSame(values_.value(key), stored.value(key)))
            continue;
        if (stored.contains(key))
            values_.insert(key, stored.value(key));
        else
            values_.remove(key);
        different.append(key);
    }
    for (const QString& key : std::as_const(different))
        Q_EMIT changed(key);
}

// An absent file is one that an editor is about to replace, and a damaged one may be half written: neither says
// anything about the settings. The next write looks again.
void IniDefaults::fileMayHaveChanged() {
    if (isMemoryOnly_)
        return;
    watch();
    if (file_.state() == SettingsFile::State::sound)
        adopt(file_.read());
}

// A file that was replaced is not watched any more, and one that was absent not yet.
void IniDefaults::watch() {
    if (isMemoryOnly_)
        return;
    const QString folder = QFileInfo(file_.path()).path();
    if (!watcher_.directories().contains(folder) && QFileInfo::exists(folder))
        watcher_.addPath(folder);
    if (!watcher_.files().contains(file_.path()) && QFileInfo::exists(file_.path()))
        watcher_.addPath(file_.path());
}

void IniDefaults::tell(const QString& sentence) {
    if (told_.contains(sentence))
        return;
    told_.insert(sentence);
    QMetaObject::invokeMethod(
        this, [this, sentence] { Q_EMIT troubled(sentence); }, Qt::QueuedConnection);
}

} // namespace quenby
