// The parts that the program is made of, and their licences. A sheet of its parent's window; it deletes itself.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "preferences/about/UsedParts.h"

#include <QDialog>

#include <memory>

namespace quenby {

class Opener;
struct LicencesDialogUi;

// For a page that no program wanted: where it is.
QString unopenedPageText(const QUrl& page);

class LicencesDialog : public QDialog {
    Q_OBJECT

public:
    LicencesDialog(Opener& opener, QWidget* parent);
    ~LicencesDialog() override;

private:
    void showPart(const UsedPart& part);
    void openLicence(const QString& identifier);

    Opener& opener_;
    const QList<UsedPart> parts_;
    const std::unique_ptr<LicencesDialogUi> ui_;
};

} // namespace quenby
