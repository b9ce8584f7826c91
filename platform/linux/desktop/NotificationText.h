// The texts of a notification in the form in which the notification service takes them. Cut to what is read at a
// glance, and without control characters.
#pragma once

#include <QString>

namespace quenby {

// One line of plain text: the service never reads markup in a title.
QString notificationTitle(const QString& title);

// Plain text, over a few lines if it has them. Where the service reads markup in the body, what looks like markup is
// escaped, so that it is shown as it stands.
QString notificationBody(const QString& text, bool serviceReadsMarkup);

} // namespace quenby
