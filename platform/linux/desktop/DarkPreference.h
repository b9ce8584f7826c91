// Follows a desktop that prefers dark windows and tells so by its portal (org.freedesktop.portal.Settings,
// "color-scheme" of org.freedesktop.appearance): the toolkit asks a desktop's own theme only, and where that says
// nothing it stays light for ever. A palette that is dark already is left alone, but for links and prompts that nobody
// can read on it.
//
// Threads: the main thread. One question at the start, whose answer comes through the event loop; afterwards the
// desktop tells. Without a bus or a portal nothing happens.
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace quenby {

class DarkPreference final : public QObject {
    Q_OBJECT

public:
    // The application must be there.
    explicit DarkPreference(const QDBusConnection& bus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask(QDBusConnection bus);
    void follow(uint scheme);

    bool wasTold_ = false; // a change is newer than the answer
    bool isOurs_ = false;  // the palette that is shown
};

} // namespace quenby
