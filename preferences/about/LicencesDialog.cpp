#include "preferences/about/LicencesDialog.h"

#include "platform/Opener.h"
#include "preferences/about/LicencesDialogUi.h"
#include "preferences/about/MakerPages.h"

#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QUrl>

namespace quenby {
namespace {

// The expression, each identifier in it a link to itself.
QString linked(const QString& expression) {
    QStringList words = expression.toHtmlEscaped().split(QLatin1Char(' '));
    const QStringList identifiers = licenceIdentifiers(expression);
    for (QString& word : words) {
        if (identifiers.contains(word))
            word = QStringLiteral("<a href=\"%1\">%1</a>").arg(word);
    }
    return words.join(QLatin1Char(' '));
}

} // namespace

QString unopenedPageText(const QUrl& page) {
    return LicencesDialog::tr("No program on this computer opened the page. It is at %1").arg(page.toString());
}

LicencesDialog::LicencesDialog(Opener& opener, QWidget* parent)
    : QDialog(parent)
    , opener_(opener)
    , parts_(usedParts())
    , ui_(std::make_unique<LicencesDialogUi>(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    for (const UsedPart& part : parts_)
        ui_->parts->addItem(part.name);
    ui_->fit(this);
    connect(ui_->parts, &QListWidget::currentRowChanged, this, [this](int row) { showPart(parts_.value(row)); });
    connect(ui_->licence, &QLabel::linkActivated, this, &LicencesDialog::openLicence);
    ui_->parts->setCurrentRow(0);
}

LicencesDialog::~LicencesDialog() = default;

void LicencesDialog::showPart(const UsedPart& part) {
    ui_->name->setText(part.name);
    ui_->purpose->setText(part.purpose);
    ui_->version->setText(part.version.isEmpty() ? tr("The version that this computer has")
                                                 : tr("Version %1").arg(part.version));
    ui_->licence->setText(tr("Licence: %1").arg(linked(part.licence)));
    ui_->trouble->hide();
    const QString text = licenceText(part);
    ui_->text->setPlainText(
        text.isEmpty()
            ? tr("This computer has no copy of the text. It stands on the pages that the licence's name opens.")
            : text);
}

void LicencesDialog::openLicence(const QString& identifier) {
    const QUrl page = makerPages::licence(identifier);
    const bool isOpened = opener_.openURL(page);
    ui_->trouble->setText(isOpened ? QString() : unopenedPageText(page));
    ui_->trouble->setVisible(!isOpened);
}

} // namespace quenby
