// Documents in the Office Open XML formats (ECMA-376), as small as readers accept them.
#pragma once

#include "localdrive/server/docs/NativeContent.h"

#include <QByteArray>

namespace quenby::localdrive {

QByteArray officeText(const NativeContent& content);         // docx
QByteArray officeSpreadsheet(const NativeContent& content);  // xlsx
QByteArray officePresentation(const NativeContent& content); // pptx

} // namespace quenby::localdrive
