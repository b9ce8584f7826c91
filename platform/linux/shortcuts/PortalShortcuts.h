// Global shortcuts of the desktop's portal (org.freedesktop.portal.GlobalShortcuts): the desktop asks its user, and
// decides which keys it are.
#pragma once

#include "platform/GlobalShortcuts.h"

#include <QDBusConnection>

#include <memory>

namespace quenby {

class PortalShortcuts final : public GlobalShortcuts {
    Q_OBJECT

public:
    explicit PortalShortcuts(const QDBusConnection& bus);
    ~PortalShortcuts() override;

    QString unavailableBecause() const override;
    CompletionTicket bind(const GlobalShortcut& shortcut, QObject* context, Bound bound) override;
    void unbind(const QString& identifier) override;
    QString keysChosenByDesktop(const QString& identifier) const override;

private:
    class Private;
    const std::unique_ptr<Private> d_;
};

} // namespace quenby
