#include "platform/linux/desktop/AlertBox.h"

#include <QLabel>
#include <QPushButton>

#include <utility>

namespace quenby {
namespace {

constexpr int smallestTextWidth = 320;

// Texts come from files' names and from servers: none of it is markup. The box itself offers this for the message only.
void showAsPlainText(QMessageBox& box) {
    box.setTextFormat(Qt::PlainText);
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
}

// What happened stands out from what to do about it, and a short text is not broken into a narrow column.
void arrangeTexts(QMessageBox& box) {
    if (auto* message = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        QFont font = message->font();
        font.setWeight(QFont::DemiBold);
        message->setFont(font);
    }
    if (auto* text = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
        text->setMinimumWidth(smallestTextWidth);
}

QList<QAbstractButton*> addButtons(QMessageBox& box, const QStringList& labels) {
    QList<QAbstractButton*> buttons;
    for (const QString& label : labels) {
        const bool isFirst = buttons.isEmpty();
        const bool isLast = !isFirst && buttons.size() == labels.size() - 1;
        QString text = label;
        text.replace(QLatin1Char('&'), QLatin1String("&&")); // no mnemonic
        QPushButton* button = box.addButton(text, isFirst  ? QMessageBox::AcceptRole
                                                  : isLast ? QMessageBox::RejectRole
                                                           : QMessageBox::ActionRole);
        if (isFirst)
            box.setDefaultButton(button);
        buttons.append(button);
    }
    // What Escape and the window's close button press.
    box.setEscapeButton(buttons.last());
    return buttons;
}

bool isOnScreen(const QWidget* window) { return window && window->isVisible() && !window->isMinimized(); }

} // namespace

QMessageBox* openAlertBox(const Alert& alert, QWidget* window, QObject* context, std::function<void(int)> pressed) {
    auto* box = new QMessageBox(isOnScreen(window) ? window : nullptr);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(QStringLiteral("Quenby"));
    box->setIcon(QMessageBox::Warning);
    box->setText(alert.messageText);
    box->setInformativeText(alert.informativeText);
    box->setDetailedText(alert.details);
    showAsPlainText(*box);
    arrangeTexts(*box);
    const auto buttons = addButtons(*box, alert.buttons.isEmpty() ? QStringList{QStringLiteral("OK")} : alert.buttons);
    QObject::connect(box, &QDialog::finished, context, [box, buttons, pressed = std::move(pressed)] {
        const qsizetype index = buttons.indexOf(box->clickedButton());
        pressed(static_cast<int>(index < 0 ? buttons.size() - 1 : index));
    });
    if (box->parentWidget()) {
        box->setWindowModality(Qt::WindowModal);
    } else {
        box->setWindowModality(Qt::NonModal);
        if (window)
            QObject::connect(window, &QObject::destroyed, box, &QObject::deleteLater);
    }
    box->show();
    box->raise();
    box->activateWindow();
    return box;
}

} // namespace quenby
