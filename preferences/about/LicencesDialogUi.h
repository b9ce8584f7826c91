// The licences dialog's widgets and where they stand. Owned by the dialog that they are made for.
#pragma once

class QDialog;
class QLabel;
class QListWidget;
class QPlainTextEdit;

namespace quenby {

struct LicencesDialogUi {
    explicit LicencesDialogUi(QDialog* dialog);

    // Once the list is full.
    void fit(QDialog* dialog) const;

    QListWidget* parts;
    QLabel* name;
    QLabel* purpose;
    QLabel* version;
    QLabel* licence; // its identifiers are links
    QLabel* trouble;
    QPlainTextEdit* text;
};

} // namespace quenby
