// Whether the desktop starts the program, hidden, when its user logs in.
//
// Threads: the main thread; small local files are read and written. The desktop keeps this, not the program: people can
// switch it off in their session's settings as well.
#pragma once

#include "core/Error.h"
#include "platform/Service.h"

#include <QObject>

namespace quenby {

class LoginItem : public QObject, public PlatformService {
    Q_OBJECT

public:
    // As the desktop sees it at the next login.
    virtual bool isEnabled() const = 0;
    // Null: it is so now, also when it was before. Nothing that people added to the desktop's entry is lost as long as
    // there is one. Errors: errorDomain::posix.
    virtual MaybeError setEnabled(bool isEnabled) = 0;
    // At the launch: an entry that is switched on and whose program is no longer where it was is led here. Another
    // entry stays as it is.
    virtual void followProgram() = 0;

Q_SIGNALS:
    // isEnabled() became another without setEnabled(): by the desktop's settings, or by hand.
    void changed();
};

} // namespace quenby
