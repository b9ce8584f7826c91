#include "platform/linux/desktop/ClipboardPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace quenby {

void ClipboardPasteboard::setText(const QString& text) { QGuiApplication::clipboard()->setText(text); }

QString ClipboardPasteboard::text() const { return QGuiApplication::clipboard()->text(); }

} // namespace quenby
