#include "platform/linux/web/engine/PageQuestionDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace quenby {
namespace {

constexpr qsizetype longestMessage = 1500; // characters
constexpr qsizetype mostLines = 20;
constexpr int lineLength = 60; // characters

QString fitting(const QString& message) {
    QString text = message.left(longestMessage);
    text = text.split(QLatin1Char('\n')).mid(0, mostLines).join(QLatin1Char('\n'));
    if (text.size() < message.size())
        text += QChar(0x2026);
    // A label breaks lines between words only; a place to break that takes no room is put into longer ones.
    static const QRegularExpression longWord(QStringLiteral("(\\S{%1})(?=\\S)").arg(lineLength / 2));
    return text.replace(longWord, QStringLiteral("\\1") + QChar(0x200B));
}

QString titleFor(PageQuestion::Kind kind) {
    switch (kind) {
    case PageQuestion::Kind::alert:
        return PageQuestionDialog::tr("Alert");
    case PageQuestion::Kind::confirm:
        return PageQuestionDialog::tr("Question");
    case PageQuestion::Kind::prompt:
        return PageQuestionDialog::tr("Input");
    case PageQuestion::Kind::leave:
        return PageQuestionDialog::tr("Leave this page?");
    }
    return {};
}

} // namespace

PageQuestionDialog::PageQuestionDialog(const PageQuestion& question, bool offersSilence, QWidget* parent)
    : QDialog(parent) {
    using Kind = PageQuestion::Kind;
    setWindowTitle(titleFor(question.kind));
    const QString message =
        question.kind == Kind::leave ? tr("What you have entered here may not be saved.") : fitting(question.message);
    auto* label = new QLabel(this);
    label->setTextFormat(Qt::PlainText);
    label->setText(message);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setMinimumWidth(fontMetrics().averageCharWidth() * lineLength);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    if (question.kind != Kind::alert)
        buttons->addButton(QDialogButtonBox::Cancel);
    if (question.kind == Kind::leave) {
        buttons->button(QDialogButtonBox::Ok)->setText(tr("&Leave"));
        buttons->button(QDialogButtonBox::Cancel)->setText(tr("&Stay"));
    }
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(label);
    if (question.kind == Kind::prompt) {
        edit_ = new QLineEdit(question.proposal, this);
        edit_->setAccessibleName(message);
        edit_->selectAll();
        layout->addWidget(edit_);
    }
    if (offersSilence) {
        silence_ = new QCheckBox(tr("&Don't let this page show more messages"), this);
        layout->addWidget(silence_);
    }
    layout->addWidget(buttons);
}

QString PageQuestionDialog::text() const { return edit_ ? edit_->text() : QString(); }

bool PageQuestionDialog::wantsSilence() const { return silence_ && silence_->isChecked(); }

} // namespace quenby
