#include "platform/linux/desktop/DarkPreference.h"

#include "platform/linux/desktop/BusCall.h"
#include "platform/linux/desktop/Surrounding.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingReply>

#include <cstdlib>

namespace quenby {
namespace {

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString schemeKey = QStringLiteral("color-scheme");
constexpr uint preferDark = 1;

// "Read" wraps the value once more than it should.
uint schemeIn(const QDBusVariant& value) {
    QVariant inner = value.variant();
    while (inner.metaType() == QMetaType::fromType<QDBusVariant>())
        inner = inner.value<QDBusVariant>().variant();
    return inner.toUInt();
}

constexpr QColor faint(160, 160, 160);

void useLinkColours(QPalette& palette) {
    palette.setColor(QPalette::Link, QColor(120, 180, 240));
    palette.setColor(QPalette::LinkVisited, QColor(190, 160, 230));
}

bool isReadable(const QPalette& palette, QPalette::ColorRole role, QPalette::ColorRole ground) {
    constexpr int leastDifference = 64; // of 255
    return std::abs(qGray(palette.color(role).rgb()) - qGray(palette.color(ground).rgb())) >= leastDifference;
}

// Many dark themes leave behind what a light one has.
QPalette mended(QPalette palette) {
    if (!isReadable(palette, QPalette::Link, QPalette::Window))
        useLinkColours(palette);
    if (!isReadable(palette, QPalette::PlaceholderText, QPalette::Base))
        palette.setColor(QPalette::PlaceholderText, faint);
    return palette;
}

// The dark counterpart of the style's own colours. What is switched off can still be read.
QPalette darkPalette() {
    const QColor text(240, 240, 240);
    const QColor window(50, 50, 50);
    const QColor base(36, 36, 36);
    QPalette palette(text, window, window.lighter(150), window.darker(150), window.darker(130), text, base);
    palette.setColor(QPalette::Button, QColor(60, 60, 60));
    palette.setColor(QPalette::AlternateBase, QColor(43, 43, 43));
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Highlight, QColor(48, 140, 198));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    useLinkColours(palette);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(80, 80, 80));
    return palette;
}

} // namespace

DarkPreference::DarkPreference(const QDBusConnection& bus, QObject* parent)
    : QObject(parent) {
    // Only what is mended counts from now on; all else stays the theme's, and follows it.
    if (isDark(QApplication::palette()))
        QApplication::setPalette(mended(QApplication::palette()));
    if (bus.isConnected())
        ask(bus);
}

void DarkPreference::ask(QDBusConnection bus) {
    qRegisterMetaType<QDBusVariant>(); // by its name the slot's parameter is looked up, and nobody has used it yet
    // Not bound to a sender: whose name that is would be a question that waits for its answer.
    bus.connect(QString(), portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalName, portalPath, settingsInterface, QStringLiteral("Read"));
    question << appearanceGroup << schemeKey;
    whenReplied(bus.asyncCall(question), this, [this](const QDBusPendingReply<QDBusVariant>& reply) {
        if (reply.isValid() && !wasTold_)
            follow(schemeIn(reply.value()));
    });
}

void DarkPreference::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group != appearanceGroup || key != schemeKey)
        return;
    wasTold_ = true;
    follow(schemeIn(value));
}

void DarkPreference::follow(uint scheme) {
    if (scheme == preferDark && !isDark(QApplication::palette())) {
        isOurs_ = true;
        QApplication::setPalette(darkPalette());
    } else if (scheme != preferDark && isOurs_) {
        isOurs_ = false;
        QApplication::setPalette(QPalette());
    }
}

} // namespace quenby
