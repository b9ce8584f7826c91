#include "platform/linux/desktop/DialogFilePanels.h"

#include "core/LocalPaths.h"
#include "platform/linux/desktop/FolderPanel.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

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

QList<QByteArray> chosenFolder(const QFileDialog& dialog) {
    const QList<QUrl> urls = dialog.selectedUrls();
    const QByteArray path = urls.isEmpty() ? QByteArray() : localPath(urls.constFirst());
    if (path.isEmpty() || !isFolder(path))
        return {};
    return {QFile::encodeName(QDir::cleanPath(QFile::decodeName(path)))};
}

// What is not on the screen cannot be in front of it.
QWidget* visibleWindowOf(QWidget* window) {
    QWidget* const topLevel = window ? window->window() : nullptr;
    return topLevel && topLevel->isVisible() ? topLevel : nullptr;
}

} // namespace

DialogFilePanels::DialogFilePanels()
    : folder_(QUrl::fromLocalFile(QDir::homePath())) {}

DialogFilePanels::~DialogFilePanels() = default;

CompletionTicket DialogFilePanels::openFiles(QWidget* window, const QString& title, const QString& prompt,
                                             QObject* context, Chosen chosen) {
    const CompletionGate<QList<QByteArray>> gate(context, std::move(chosen));
    QFileDialog* dialog = makePanel(window, title);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setDirectoryUrl(folder_);
    dialog->setLabelText(QFileDialog::Accept, prompt);
    connect(dialog, &QDialog::finished, this, [this, dialog, gate](int result) {
        if (result != QDialog::Accepted || dialog->selectedUrls().isEmpty()) {
            gate.deliver(QList<QByteArray>());
            return;
        }
        // Not the folder that the panel shows: a path can be typed from anywhere.
        folder_ = dialog->selectedUrls().constFirst().adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
        gate.deliver(chosenFiles(*dialog));
    });
    present(*dialog);
    return gate.ticket();
}

CompletionTicket DialogFilePanels::openFolder(QWidget* window, const QString& title, const FolderPanelRules& rules,
                                              QObject* context, Chosen chosen) {
    const CompletionGate<QList<QByteArray>> gate(context, std::move(chosen));
    QFileDialog* dialog = nullptr;
    if (FolderPanel::isNeededFor(rules)) {
        dialog = new FolderPanel(visibleWindowOf(window), title, rules);
        setUp(*dialog);
    } else {
        dialog = makePanel(window, title);
        dialog->setFileMode(QFileDialog::Directory);
    }
    dialog->setDirectoryUrl(rules.directory.isEmpty() ? folder_
                                                      : QUrl::fromLocalFile(QFile::decodeName(rules.directory)));
    dialog->setLabelText(QFileDialog::Accept, tr("Choose"));
    connect(dialog, &QDialog::finished, this, [dialog, gate](int result) {
        gate.deliver(result == QDialog::Accepted ? chosenFolder(*dialog) : QList<QByteArray>());
    });
    present(*dialog);
    return gate.ticket();
}

CompletionTicket DialogFilePanels::saveFile(QWidget* window, const QString& title, const QByteArray& proposal,
                                            QObject* context, Chosen chosen) {
    return save(*makePanel(window, title), proposal, context, std::move(chosen));
}

CompletionTicket DialogFilePanels::saveNewFile(QWidget* window, const QString& title, const QByteArray& proposal,
                                               QObject* context, Chosen chosen) {
    QFileDialog* dialog = makePanel(window, title);
    dialog->setOption(QFileDialog::DontConfirmOverwrite);
    return save(*dialog, proposal, context, std::move(chosen));
}

CompletionTicket DialogFilePanels::save(QFileDialog& dialog, const QByteArray& proposal, QObject* context,
                                        Chosen chosen) {
    const CompletionGate<QList<QByteArray>> gate(context, std::move(chosen));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    const QFileInfo proposed(QFile::decodeName(proposal));
    dialog.setDirectory(proposed.absolutePath());
    // Quotation marks separate names in this panel: what stands between them would be taken for the name.
    dialog.selectFile(proposed.fileName().replace(QLatin1Char('"'), QLatin1Char('\'')));
    connect(&dialog, &QDialog::finished, this, [&dialog, gate](int result) {
        gate.deliver(result == QDialog::Accepted ? chosenFiles(dialog) : QList<QByteArray>());
    });
    present(dialog);
    return gate.ticket();
}

QFileDialog* DialogFilePanels::makePanel(QWidget* window, const QString& title) const {
    auto* dialog = new QFileDialog(visibleWindowOf(window), title);
    setUp(*dialog);
    return dialog;
}

void DialogFilePanels::setUp(QFileDialog& dialog) const {
    dialog.setAttribute(Qt::WA_DeleteOnClose);
    dialog.setSupportedSchemes({QStringLiteral("file")});
    dialog.setWindowModality(dialog.parentWidget() ? Qt::WindowModal : Qt::NonModal);
    // The panel dies with its service, also when it has no window.
    connect(this, &QObject::destroyed, &dialog, [&dialog] { delete &dialog; });
}

void DialogFilePanels::present(QFileDialog& dialog) {
    dialog.show();
    dialog.raise();
    dialog.activateWindow();
}

} // namespace quenby
