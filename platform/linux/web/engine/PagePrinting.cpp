#include "platform/linux/web/engine/PagePrinting.h"

#include <QMessageBox>
#include <QPageRanges>
#include <QPrintDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QWebEngineView>

namespace quenby {

namespace {

// The dialog proposes a file of this name.
QString asFileName(QString title) {
    static const QRegularExpression harmful(QStringLiteral("[/\\\\\\p{C}]+|^\\.+"));
    return title.replace(harmful, QStringLiteral(" ")).simplified().left(80);
}

} // namespace

PagePrinting::PagePrinting(QWebEngineView* view)
    : QObject(view)
    , view_(view) {
    connect(view, &QWebEngineView::printFinished, this, &PagePrinting::finish);
    connect(view, &QWebEngineView::pdfPrintingFinished, this,
            [this](const QString&, bool isPrinted) { finish(isPrinted); });
}

PagePrinting::~PagePrinting() {
    const bool isDrawing = printer_ && !dialog_ && printer_->outputFormat() != QPrinter::PdfFormat;
    delete dialog_;
    // The engine draws on it in a thread that nobody can wait for: it is left to that.
    if (isDrawing) [[maybe_unused]]
        auto* left = printer_.release();
}

void PagePrinting::start() {
    if (printer_) {
        if (dialog_)
            dialog_->raise();
        return;
    }
    printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer_->setDocName(asFileName(view_->title()));
    dialog_ = new QPrintDialog(printer_.get(), view_->window());
    dialog_->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog_, &QDialog::accepted, this, &PagePrinting::print);
    connect(dialog_, &QDialog::rejected, this, [this] { printer_.reset(); });
    dialog_->open();
}

void PagePrinting::print() {
    // To a file the engine writes text as text; through a printer it would draw pictures of the pages.
    if (printer_->outputFormat() == QPrinter::PdfFormat)
        view_->printToPdf(printer_->outputFileName(), printer_->pageLayout(), printer_->pageRanges());
    else
        view_->print(printer_.get());
}

void PagePrinting::finish(bool isPrinted) {
    if (!printer_)
        return;
    const bool toFile = printer_->outputFormat() == QPrinter::PdfFormat;
    printer_.reset();
    if (isPrinted)
        return;
    auto* message = new QMessageBox(view_->window());
    message->setAttribute(Qt::WA_DeleteOnClose);
    message->setIcon(QMessageBox::Warning);
    message->setText(tr("The page was not printed"));
    message->setInformativeText(toFile ? tr("Check whether the folder may be written to, or choose another.")
                                       : tr("Check the printer, or choose another."));
    message->open();
}

} // namespace quenby
