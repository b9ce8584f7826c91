// Global shortcuts as key grabs on the X server's root windows.
//
// The keys of a shortcut are those that make its symbol in the layout that is active, else in another of the keyboard's
// layouts; they follow the layout, and come back when the keyboard's configuration is made anew. Lock keys make no
// difference.
#pragma once

#include "platform/GlobalShortcuts.h"

#include <memory>

namespace quenby {

class X11Shortcuts final : public GlobalShortcuts {
    Q_OBJECT

public:
    X11Shortcuts();
    ~X11Shortcuts() override;

    QString unavailableBecause() const override;
    CompletionTicket bind(const GlobalShortcut& shortcut, QObject* context, Bound bound) override;
    void unbind(const QString& identifier) override;
    QString keysChosenByDesktop(const QString& identifier) const override;

private:
    class Private;
    const std::unique_ptr<Private> d_;
};

} // namespace quenby
