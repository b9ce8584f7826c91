#include "app/clipboard/ClipboardUpload.h"

#include "app/agent/CacheFolderNames.h"
#include "app/uploads/transfer/FileKinds.h"
#include "core/CaptureNames.h"
#include "platform/CacheFolders.h"
#include "platform/Pasteboard.h"

#include <QFile>
#include <QLoggingCategory>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(clipboardLog, "quenby.clipboard", QtInfoMsg)

const QString folderName = QStringLiteral("Clip board");

Alert alertWith(const QString& informativeText, const QStringList& buttons = {}) {
    return {QStringLiteral("Alert"), informativeText, {}, buttons};
}

} // namespace

ClipboardUpload::ClipboardUpload(const Services& services, WindowProvider window, QObject* parent)
    : QObject(parent)
    , services_(services)
    , window_(std::move(window)) {}

void ClipboardUpload::cancel() { command_.reset(); }

void ClipboardUpload::fetchLastFromClipBoard() {
    if (command_)
        return;
    command_ = std::make_unique<QObject>();
    switch (services_.pasteboard.contents()) {
    case PasteboardContents::files:
        return lookForFiles();
    case PasteboardContents::picture:
        return keepPicture();
    case PasteboardContents::text:
        qCInfo(clipboardLog, "string");
        break;
    case PasteboardContents::other:
        qCInfo(clipboardLog, "Other");
        break;
    case PasteboardContents::nothing:
        qCInfo(clipboardLog, "no any item in pastboard");
        break;
    }
    tellThatThereIsNone();
}

void ClipboardUpload::lookForFiles() {
    const QList<QByteArray> paths = services_.pasteboard.filePaths();
    lookAtFiles(services_.timeSource, paths, command_.get(),
                [this, paths](const QList<FileKind>& kinds) { filesLookedAt(paths, kinds); });
}

void ClipboardUpload::filesLookedAt(const QList<QByteArray>& paths, const QList<FileKind>& kinds) {
    qCInfo(clipboardLog, "List");
    QList<QByteArray> candidates;
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (kinds.at(i) == FileKind::regular)
            candidates.append(paths.at(i));
    }
    if (const auto notTold = kinds.count(FileKind::notTold))
        qCWarning(clipboardLog, "%lld of the copied files are left out: their disk or network folder does not answer",
                  static_cast<long long>(notTold));
    if (candidates.isEmpty())
        tellThatThereIsNone();
    else
        ask(candidates);
}

// Kept, and nothing more: the command's offer is for files.
void ClipboardUpload::keepPicture() {
    const Result<QString> folder = services_.cacheFolders.create(cacheFolderName::copiedPictures);
    if (!folder) {
        qCWarning(clipboardLog, "a copied picture could not be kept: %s", qUtf8Printable(folder.error().description()));
        return tellThatThereIsNone();
    }
    const QString path = *folder + QLatin1Char('/') + copiedPictureName(services_.timeSource->now());
    services_.pasteboard.writePicture(QFile::encodeName(path), command_.get(), [this](bool isWritten) {
        if (isWritten)
            qCInfo(clipboardLog, "Image Direct");
        tellThatThereIsNone();
    });
}

void ClipboardUpload::tellThatThereIsNone() {
    services_.alerts.show(window_(), alertWith(QStringLiteral("No file found in last Clipboard.")), command_.get(),
                          [this](int) { command_.reset(); });
}

void ClipboardUpload::ask(const QList<QByteArray>& candidates) {
    services_.alerts.show(window_(),
                          alertWith(QStringLiteral("Are you sure you want to upload last Clipboard files?"),
                                    {QStringLiteral("Upload"), QStringLiteral("Cancel")}),
                          command_.get(), [this, candidates](int button) {
                              const int uploadButton = 0;
                              command_.reset();
                              if (button == uploadButton)
                                  Q_EMIT uploadRequested(folderName, candidates);
                          });
}

} // namespace quenby
