#include "platform/linux/web/engine/PageDialogs.h"

#include "platform/linux/web/engine/PageQuestionDialog.h"

#include <QEventLoop>
#include <QFileDialog>

#include <utility>

namespace quenby {
namespace {

constexpr int enoughInARow = 3;
constexpr qint64 rowPause = 3000; // milliseconds; after a longer pause a new row begins

} // namespace

std::optional<QString> PageDialogs::ask(const PageQuestion& question) {
    // Who wants to hear nothing more of a page can still leave it.
    if (silenced_ == question.origin)
        return question.kind == PageQuestion::Kind::leave ? std::optional(QString()) : std::nullopt;
    if (!over_ || open_)
        return std::nullopt;
    const QPointer<PageQuestionDialog> dialog = new PageQuestionDialog(question, isInARow(), over_->window());
    const bool isAccepted = run(*dialog);
    sinceLast_.start();
    if (!dialog)
        return std::nullopt;
    if (dialog->wantsSilence())
        silenced_ = question.origin;
    const QString text = dialog->text();
    delete dialog;
    return isAccepted ? std::optional(text) : std::nullopt;
}

QStringList PageDialogs::chooseFiles(QWebEnginePage::FileSelectionMode mode, const QString& proposal) {
    if (!over_ || open_)
        return {};
    const QPointer<QFileDialog> dialog = new QFileDialog(over_->window());
    const bool isFolder = mode == QWebEnginePage::FileSelectUploadFolder;
    switch (mode) {
    case QWebEnginePage::FileSelectOpen:
        dialog->setFileMode(QFileDialog::ExistingFile);
        break;
    case QWebEnginePage::FileSelectOpenMultiple:
        dialog->setFileMode(QFileDialog::ExistingFiles);
        break;
    case QWebEnginePage::FileSelectUploadFolder:
        dialog->setFileMode(QFileDialog::Directory);
        dialog->setOption(QFileDialog::ShowDirsOnly);
        break;
    case QWebEnginePage::FileSelectSave:
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->selectFile(proposal);
        break;
    }
    const bool isAccepted = run(*dialog);
    if (!dialog)
        return {};
    QStringList files = isAccepted ? dialog->selectedFiles() : QStringList();
    delete dialog;
    if (isFolder) { // the engine lists what is below, and wants it to end like this
        for (QString& folder : files)
            folder += QLatin1Char('/');
    }
    return files;
}

void PageDialogs::end() {
    if (open_)
        open_->reject();
}

void PageDialogs::close() {
    over_.clear();
    end();
}

// Whether the user accepted it. It may be gone then, with its window.
bool PageDialogs::run(QDialog& dialog) {
    QEventLoop loop;
    bool isAccepted = false;
    QObject::connect(&dialog, &QDialog::finished, &loop, [&loop, &isAccepted](int result) {
        isAccepted = result == QDialog::Accepted;
        loop.quit();
    });
    QObject::connect(&dialog, &QObject::destroyed, &loop, &QEventLoop::quit);
    open_ = &dialog;
    dialog.open(); // modal for its window alone
    loop.exec();
    open_.clear();
    return isAccepted;
}

bool PageDialogs::isInARow() {
    const bool goesOn = sinceLast_.isValid() && sinceLast_.elapsed() < rowPause;
    inARow_ = goesOn ? inARow_ + 1 : 1;
    return inARow_ >= enoughInARow;
}

} // namespace quenby
