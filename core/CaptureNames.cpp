#include "core/CaptureNames.h"

#include <QLocale>

namespace quenby {
namespace {

QString captureName(const QString& prefix, const QDateTime& time) {
    const QDateTime local = time.toLocalTime();
    const QLocale english = QLocale::c();
    return prefix + QLatin1Char(' ') + english.toString(local.date(), QStringLiteral("yyyy-MM-dd")) +
           QStringLiteral(" at ") + english.toString(local.time(), QStringLiteral("hh.mm.ss AP"));
}

} // namespace

QString screenShotName(const QDateTime& time) {
    return captureName(QStringLiteral("Screen Shot"), time) + QStringLiteral(".png");
}

QString copiedPictureName(const QDateTime& time) {
    return captureName(QStringLiteral("Copied"), time) + QStringLiteral(".png");
}

QString screenCastName(const QDateTime& time) { return captureName(QStringLiteral("ScreenCast"), time); }

} // namespace quenby
