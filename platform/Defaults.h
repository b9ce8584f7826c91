// The user's settings: values under keys that are stored exactly as they are spelled.
//
// Threads: the main thread. A value that was set is there for the next start, also when the program is killed right
// afterwards; when it cannot be written, it holds until the program ends, and troubled() says so once.
#pragma once

#include "platform/Service.h"

#include <QObject>
#include <QVariant>

namespace quenby {

class Defaults : public QObject, public PlatformService {
    Q_OBJECT

public:
    // Invalid when the key is absent.
    virtual QVariant valueForKey(const QString& key) const = 0;
    virtual void setValueForKey(const QString& key, const QVariant& value) = 0;
    virtual void removeValueForKey(const QString& key) = 0;

    // A stored value that is no boolean counts as absent.
    bool boolForKey(const QString& key, bool absent = false) const;

Q_SIGNALS:
    // The key has another value than before, set here or by another program.
    void changed(const QString& key);
    // Something about the settings that people should read: a damaged file that was set aside, a folder that cannot
    // be written. Emitted through the event loop, so that whoever made the object can still connect.
    void troubled(const QString& sentence);
};

} // namespace quenby
