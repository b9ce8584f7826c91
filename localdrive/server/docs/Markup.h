// Texts inside XML and HTML.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby::localdrive {

inline constexpr char xmlHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

inline QByteArray escaped(const QString& text) { return text.toHtmlEscaped().toUtf8(); }

} // namespace quenby::localdrive
