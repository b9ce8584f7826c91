// What the workspace window shows of the signed-in account: who it is, how full it is, a place to drop files on, and
// the uploads that run.
//
// Threads: the main thread.
#pragma once

#include "core/AccountDisplay.h"

#include <QString>
#include <QWidget>

#include <memory>

class QMenu;

namespace quenby {

struct AccountViewUi;
class UploadRows;

class AccountView : public QWidget {
    Q_OBJECT

public:
    explicit AccountView(QWidget* parent = nullptr);
    ~AccountView() override;

    void setAccount(const AccountDisplay& account);
    // Takes the view over, and deletes the one before.
    void setDropView(QWidget* dropView);
    // Not owned; outlives the view, or null is set before it goes.
    void setUploads(UploadRows* uploads);
    // Whether there is a popover that "Show Changes" can open.
    void setShowsChanges(bool shows);
    // All commands, behind a button in the corner. Not owned.
    void setCommandsMenu(QMenu* menu);
    // Puts the keyboard's focus where it is wanted first.
    void focusFirst();

Q_SIGNALS:
    void uploadRequested();
    void showChangesRequested();

private:
    void countUploads();

    const std::unique_ptr<AccountViewUi> ui_;
    UploadRows* uploads_ = nullptr;
};

} // namespace quenby
