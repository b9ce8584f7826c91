#include "platform/linux/desktop/DialogFilePanels.h"

#include "platform/linux/desktop/LocalPaths.h"

#include <QDir>
#include <QFileDialog>

#include <sys/stat.h>

#include <utility>

namespace quenby {
namespace {

bool isFolder(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

QList<QByteArray> chosenFiles(const QFileDialog& dialog) {
    QList<QByteArray> paths;
    for (const QUrl& url : dialog.selectedUrls()) {
        const QByteArray path = localPath(url);
        if (!path.isEmpty() && !isFolder(path))
            paths.append(path);
    }
    return paths;
}

} // namespace

DialogFilePanels::DialogFilePanels()
    : folder_(QUrl::fromLocalFile(QDir::homePath())) {}

DialogFilePanels::~DialogFilePanels() = default;

CompletionTicket DialogFilePanels::openFiles(QWidget* window, const QString& title, const QString& prompt,
                                             QObject* context, Chosen chosen) {
    const CompletionGate<QList<QByteArray>> gate(context, std::move(chosen));
    QWidget* const topLevel = window ? window->window() : nullptr;
    auto* dialog = new QFileDialog(topLevel && topLevel->isVisible() ? topLevel : nullptr, title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setSupportedSchemes({QStringLiteral("file")});
    dialog->setDirectoryUrl(folder_);
    dialog->setLabelText(QFileDialog::Accept, prompt);
    dialog->setWindowModality(dialog->parentWidget() ? Qt::WindowModal : Qt::NonModal);
    connect(dialog, &QDialog::finished, this, [this, dialog, gate](int result) {
        if (result != QDialog::Accepted || dialog->selectedUrls().isEmpty()) {
            gate.deliver(QList<QByteArray>());
            return;
        }
        // Not the folder that the panel shows: a path can be typed from anywhere.
        folder_ = dialog->selectedUrls().constFirst().adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
        gate.deliver(chosenFiles(*dialog));
    });
    // The panel dies with its service, also when it has no window.
    connect(this, &QObject::destroyed, dialog, [dialog] { delete dialog; });
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
    return gate.ticket();
}

} // namespace quenby
