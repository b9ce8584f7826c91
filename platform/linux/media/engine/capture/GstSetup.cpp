#include "platform/linux/media/engine/capture/GstSetup.h"

#include "platform/linux/media/engine/GstHandles.h"

#include <QHash>

namespace quenby {
namespace {

QString packageOf(const QByteArray& element) {
    static const QHash<QByteArray, QString> packages{
        {"ximagesrc", QStringLiteral("gstreamer1.0-plugins-good")},
        {"videocrop", QStringLiteral("gstreamer1.0-plugins-good")},
        {"qtmux", QStringLiteral("gstreamer1.0-plugins-good")},
        {"videorate", QStringLiteral("gstreamer1.0-plugins-base")},
        {"videoconvert", QStringLiteral("gstreamer1.0-plugins-base")},
        {"videotestsrc", QStringLiteral("gstreamer1.0-plugins-base")},
        {"appsrc", QStringLiteral("gstreamer1.0-plugins-base")},
        {"appsink", QStringLiteral("gstreamer1.0-plugins-base")},
        {"h264parse", QStringLiteral("gstreamer1.0-plugins-bad")},
        {"openh264enc", QStringLiteral("gstreamer1.0-plugins-bad")},
        {"x264enc", QStringLiteral("gstreamer1.0-plugins-ugly")},
        {"pipewiresrc", QStringLiteral("gstreamer1.0-pipewire")},
        {"videoflip", QStringLiteral("gstreamer1.0-plugins-good")},
        {"watchdog", QStringLiteral("gstreamer1.0-plugins-bad")},
    };
    return packages.value(element, QStringLiteral("libgstreamer1.0-0"));
}

// What stands first between two links: "x264enc" of " x264enc threads=1 "; empty for the description of a format.
QByteArray elementName(const QByteArray& step) {
    const QByteArray name = step.simplified().split(' ').first();
    return name.contains('/') ? QByteArray() : name;
}

} // namespace

Result<void> startFramework() {
    GError* error = nullptr;
    if (gst_init_check(nullptr, nullptr, &error))
        return {};
    const GlibError owned(error);
    return Error(URLErrorCode::unknown,
                 {{errorKey::reason, QStringLiteral("The screen cannot be recorded, because the media framework does "
                                                    "not start. Details: %1")
                                         .arg(QString::fromUtf8(error ? error->message : "none"))}});
}

QByteArray missingElement(const QByteArray& description) {
    for (const QByteArray& step : description.split('!')) {
        const QByteArray name = elementName(step);
        if (name.isEmpty())
            continue;
        const GstHandle<GstElementFactory> factory(gst_element_factory_find(name.constData()));
        if (!factory)
            return name;
    }
    return {};
}

QString missingElementReason(const QByteArray& element) {
    return QStringLiteral("The screen cannot be recorded, because a part of the media framework is missing: %1. "
                          "Install it (on Debian the package %2) and try again.")
        .arg(QString::fromLatin1(element), packageOf(element));
}

} // namespace quenby
