#include "platform/linux/desktop/ClipboardPasteboard.h"

#include "core/LocalPaths.h"
#include "platform/linux/desktop/ClipboardPicture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <algorithm>
#include <system_error>

namespace quenby {
namespace {

// Null when the clipboard is not ours to see: some desktops show it to the active window's program only.
const QMimeData* copied() { return QGuiApplication::clipboard()->mimeData(); }

QList<QByteArray> localPathsOn(const QMimeData& data) {
    // The second is a list as well, after a line that says whether to copy or to move.
    for (const QString& type : {QStringLiteral("text/uri-list"), QStringLiteral("x-special/gnome-copied-files")}) {
        const QList<QByteArray> paths = data.hasFormat(type) ? localPathsOfList(data.data(type)) : QList<QByteArray>();
        if (!paths.isEmpty())
            return paths;
    }
    return {};
}

bool hasPlainText(const QMimeData& data) {
    const QStringList types = data.formats();
    return std::any_of(types.cbegin(), types.cend(),
                       [](const QString& type) { return type.startsWith(QLatin1String("text/plain")); });
}

} // namespace

void ClipboardPasteboard::setText(const QString& text) { QGuiApplication::clipboard()->setText(text); }

QString ClipboardPasteboard::text() const { return QGuiApplication::clipboard()->text(); }

PasteboardContents ClipboardPasteboard::contents() const {
    const QMimeData* data = copied();
    if (!data || data->formats().isEmpty())
        return PasteboardContents::nothing;
    if (!localPathsOn(*data).isEmpty())
        return PasteboardContents::files;
    if (hasPicture(*data))
        return PasteboardContents::picture;
    return hasPlainText(*data) ? PasteboardContents::text : PasteboardContents::other;
}

QList<QByteArray> ClipboardPasteboard::filePaths() const {
    const QMimeData* data = copied();
    return data ? localPathsOn(*data) : QList<QByteArray>();
}

void ClipboardPasteboard::writePicture(const QByteArray& path, QObject* context, std::function<void(bool)> done) {
    const CompletionGate<bool> gate(context, std::move(done));
    const QMimeData* data = copied();
    ClipboardPicture picture = data ? fetchPicture(*data) : ClipboardPicture();
    if (picture.bytes.isEmpty() && picture.image.isNull())
        return gate.deliver(false);
    try {
        writer_ = std::jthread([before = std::move(writer_), picture = std::move(picture), path, gate]() mutable {
            if (before.joinable())
                before.join();
            gate.deliver(writeAsTiff(picture, path));
        });
    } catch (const std::system_error&) { // no more threads
        gate.deliver(false);
    }
}

} // namespace quenby
