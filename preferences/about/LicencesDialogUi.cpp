#include "preferences/about/LicencesDialogUi.h"

#include "preferences/about/LicencesDialog.h"
#include "widgets/SecondaryLabel.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr QSize usualSize(760, 520);
constexpr int margin = 16;
constexpr qreal nameFactor = 1.2;    // of the usual text's size
constexpr int charactersInLine = 84; // more than most of the texts have

QLabel* makeName(QWidget* parent) {
    auto* label = new ElidedLabel(parent);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * nameFactor);
    font.setWeight(QFont::DemiBold);
    label->setFont(font);
    return label;
}

QPlainTextEdit* makeText(QWidget* parent) {
    auto* text = new QPlainTextEdit(parent);
    text->setReadOnly(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setTabChangesFocus(true);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setLayoutDirection(Qt::LeftToRight); // they are English
    text->setAccessibleName(LicencesDialog::tr("The licence's text"));
    return text;
}

QVBoxLayout* makeFacts(const LicencesDialogUi& ui) {
    auto* facts = new QVBoxLayout;
    facts->setSpacing(4);
    for (QLabel* label : {ui.name, ui.purpose, ui.version, ui.licence, ui.trouble})
        facts->addWidget(label);
    facts->addSpacing(4);
    facts->addWidget(ui.text, 1);
    return facts;
}

// Wide enough for the longest name and a text's whole lines, but never more than the screen has.
QSize sizeFor(const QDialog& dialog, const LicencesDialogUi& ui) {
    const int lines = ui.text->fontMetrics().averageCharWidth() * (charactersInLine + 4);
    const QSize wanted(ui.parts->width() + lines + 4 * margin, usualSize.height());
    return wanted.expandedTo(usualSize).boundedTo(dialog.screen()->availableSize() * 9 / 10);
}

} // namespace

LicencesDialogUi::LicencesDialogUi(QDialog* dialog)
    : parts(new QListWidget(dialog))
    , name(makeName(dialog))
    , purpose(new SecondaryLabel(dialog))
    , version(new SecondaryLabel(dialog))
    , licence(new ElidedLabel(dialog))
    , trouble(new ElidedLabel(dialog))
    , text(makeText(dialog)) {
    dialog->setWindowTitle(LicencesDialog::tr("Licences"));
    parts->setAccessibleName(LicencesDialog::tr("Parts of the program"));
    parts->setSpacing(1);
    parts->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    licence->setTextFormat(Qt::RichText);
    licence->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    licence->setWordWrap(true);
    licence->setAccessibleName(LicencesDialog::tr("Licence"));
    trouble->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    trouble->setWordWrap(true);
    trouble->hide();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
    buttons->button(QDialogButtonBox::Close)->setIcon({}); // its colour may be the ground's
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto* columns = new QHBoxLayout;
    columns->setSpacing(margin);
    columns->addWidget(parts);
    columns->addLayout(makeFacts(*this), 1);
    auto* layout = new QVBoxLayout(dialog);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(margin);
    layout->addLayout(columns, 1);
    layout->addWidget(buttons);
    QWidget::setTabOrder(parts, licence);
    QWidget::setTabOrder(licence, text);
    QWidget::setTabOrder(text, buttons);
}

void LicencesDialogUi::fit(QDialog* dialog) const {
    constexpr int scrollBarRoom = 24;
    parts->setFixedWidth(parts->sizeHintForColumn(0) + 2 * parts->frameWidth() + scrollBarRoom);
    dialog->resize(sizeFor(*dialog, *this));
}

} // namespace quenby
