#include "workspace/uploads/CancelQuestion.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace quenby {
namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(CancelQuestion)
};

} // namespace

void askWhetherToCancel(QWidget* window, const QList<QueueRow>& rows, std::function<void()> confirmed) {
    const bool isOne = rows.size() == 1;
    const bool hasBegun = std::any_of(rows.begin(), rows.end(), [](const QueueRow& row) { return row.sent > 0; });
    auto* box = new QMessageBox(window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Question);
    box->setTextFormat(Qt::PlainText); // of names
    box->setText(isOne ? Words::tr("Cancel the upload of “%1”?").arg(rows.first().name)
                       : Words::tr("Cancel %n uploads?", nullptr, int(rows.size())));
    box->setInformativeText(hasBegun ? Words::tr("What has been sent so far is lost. The files on this computer stay.")
                                     : Words::tr("The files on this computer stay."));
    QPushButton* cancel = box->addButton(isOne ? Words::tr("&Cancel Upload") : Words::tr("&Cancel Uploads"),
                                         QMessageBox::DestructiveRole);
    QPushButton* keep = box->addButton(Words::tr("&Keep"), QMessageBox::RejectRole);
    box->setDefaultButton(keep);
    box->setEscapeButton(keep);
    QObject::connect(cancel, &QPushButton::clicked, window, std::move(confirmed));
    box->open();
}

} // namespace quenby
