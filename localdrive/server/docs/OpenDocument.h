// Documents in the OpenDocument format (OASIS, version 1.2).
#pragma once

#include "localdrive/server/docs/NativeContent.h"

#include <QByteArray>

namespace quenby::localdrive {

QByteArray openDocumentText(const NativeContent& content);
QByteArray openDocumentSpreadsheet(const NativeContent& content);

} // namespace quenby::localdrive
