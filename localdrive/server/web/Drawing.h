// Small pictures that are made rather than kept.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace quenby::localdrive {

// A PNG of 32 by 32 pixels for one of iconNames(): a sheet, or a folder, in the kind's colour. Nothing for other names.
std::optional<QByteArray> iconPng(const QString& name);

// A PNG of 320 by 220 pixels: hills under a sun, in colours that the seed chooses.
QByteArray landscapePng(quint32 seed);

// A PNG of 128 by 128 pixels: somebody's head and shoulders, in colours that the seed chooses.
QByteArray facePng(quint32 seed);

} // namespace quenby::localdrive
