#include "preferences/about/AboutPaneUi.h"

#include "preferences/about/AboutPane.h"
#include "preferences/about/LinkButton.h"
#include "widgets/SecondaryLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr int margin = 16;
constexpr qreal nameFactor = 1.5; // of the usual text's size

void enlarge(QLabel& label) {
    QFont font = label.font();
    font.setPointSizeF(font.pointSizeF() * nameFactor);
    font.setWeight(QFont::DemiBold);
    label.setFont(font);
}

void makeSelectable(QLabel& label) {
    label.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label.setFocusPolicy(Qt::StrongFocus);
}

QPushButton* makeButton(const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setAutoDefault(true); // so that Return presses it, too
    return button;
}

QHBoxLayout* makeHeader(const AboutPaneUi& ui) {
    auto* names = new QVBoxLayout;
    names->setSpacing(2);
    names->addStretch(1);
    names->addWidget(ui.txtAppName);
    names->addWidget(ui.txtVersion);
    names->addWidget(ui.txtCopyRights);
    names->addStretch(1);
    auto* header = new QHBoxLayout;
    header->setSpacing(margin);
    header->addWidget(ui.appicon);
    header->addLayout(names, 1);
    return header;
}

QHBoxLayout* makeRow(const QList<QWidget*>& widgets, int spacing) {
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing);
    for (QWidget* widget : widgets)
        row->addWidget(widget);
    return row;
}

} // namespace

AboutPaneUi::AboutPaneUi(QWidget* pane)
    : appicon(new QLabel(pane))
    , txtAppName(new ElidedLabel(pane))
    , txtCopyRights(new SecondaryLabel(pane))
    , faq(new LinkButton(AboutPane::tr("&Forum"), pane))
    , twitter(new LinkButton(AboutPane::tr("&News"), pane))
    , fanPage(new LinkButton(AboutPane::tr("&Community"), pane))
    , vantrel(new LinkButton(AboutPane::tr("&Web Site"), pane))
    , trouble(new ElidedLabel(pane))
    , licencesButton(makeButton(AboutPane::tr("&Licences…"), pane))
    , diagnosticsButton(makeButton(AboutPane::tr("Copy &Diagnostics"), pane))
    , confirmation(new SecondaryLabel(pane))
    , txtVersion(new SecondaryLabel(pane)) {
    enlarge(*txtAppName);
    makeSelectable(*txtVersion);
    diagnosticsButton->setToolTip(
        AboutPane::tr("Copies what somebody who helps needs to know: no names, addresses or files."));
    trouble->setWordWrap(true);
    makeSelectable(*trouble);
    trouble->hide();

    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(12);
    layout->addLayout(makeHeader(*this));
    auto* links = makeRow({faq, twitter, fanPage, vantrel}, margin);
    links->addStretch(1);
    layout->addLayout(links);
    layout->addStretch(1);
    layout->addWidget(trouble);
    auto* buttons = makeRow({licencesButton, diagnosticsButton}, 8);
    buttons->addWidget(confirmation, 1);
    layout->addLayout(buttons);
}

} // namespace quenby
