// Documents as plain text, tables of text, and pages.
#pragma once

#include "localdrive/server/docs/NativeContent.h"

#include <QByteArray>

namespace quenby::localdrive {

// Headings and texts, a blank line between sections.
QByteArray plainText(const NativeContent& content);

// RFC 4180.
QByteArray commaSeparated(const NativeContent& content);
// Tabs and line ends inside cells become blanks.
QByteArray tabSeparated(const NativeContent& content);

// What stands between <body> and </body>: headings, paragraphs, tables.
QByteArray htmlBody(const NativeContent& content);
// A page of its own in a ZIP archive.
QByteArray zippedPage(const QString& title, const NativeContent& content);

} // namespace quenby::localdrive
