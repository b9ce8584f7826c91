// Keys that reach the program whichever window has the keyboard.
//
// Threads: the main thread; nothing blocks on another program.
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"
#include "platform/Service.h"

#include <QKeySequence>
#include <QObject>
#include <QString>

#include <functional>

namespace quenby {

struct GlobalShortcut {
    QString identifier;  // the same in every run: a desktop may keep what it was bound to. ASCII letters
    QString description; // for people: what it does
    QKeySequence keys;   // the first chord counts; where the desktop lets the user choose, they are a proposal
};

class GlobalShortcuts : public QObject, public PlatformService {
    Q_OBJECT

public:
    // No error: the keys work from now on. An error's reason is a sentence that says what to do: another program has
    // them, no key of this keyboard makes them, the desktop or the user refused.
    using Bound = std::function<void(const MaybeError& trouble)>;

    // Takes the place of what the identifier was bound to before, which no longer works, also when this fails.
    // Cancelling the ticket leaves the keys bound or not: unbind() is what takes them back.
    virtual CompletionTicket bind(const GlobalShortcut& shortcut, QObject* context, Bound bound) = 0;
    // At once. What is not bound stays so.
    virtual void unbind(const QString& identifier) = 0;
    // In words, where the desktop decides which keys it are; else empty.
    virtual QString keysChosenByDesktop(const QString& identifier) const = 0;

Q_SIGNALS:
    // Once for each time that the keys are pressed, however long they are held.
    void activated(const QString& identifier);
    // Something that was bound works no longer, or works again, or has other keys now: the keyboard's configuration
    // changed, or the desktop's settings did.
    void changed(const QString& identifier, const quenby::MaybeError& trouble);
};

} // namespace quenby
