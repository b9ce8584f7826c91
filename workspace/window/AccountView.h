// What the workspace window shows of the signed-in account: who it is, how full it is, a place to drop files on, and
// the uploads that run.
//
// Threads: the main thread.
#pragma once

#include "core/AccountDisplay.h"

#include <QString>
#include <QWidget>

#include <memory>

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
    // There are downloads below: the place for drops is smaller then, as it is while uploads run.
    void setShowsDownloads(bool showsDownloads);
    // Puts the keyboard's focus where it is wanted first.
    void focusFirst();

Q_SIGNALS:
    void uploadRequested();
    // The whole queue, with what waits, rests or failed.
    void allUploadsRequested();

private:
    void countUploads();
    void fitDropPlace();

    const std::unique_ptr<AccountViewUi> ui_;
    UploadRows* uploads_ = nullptr;
    bool showsDownloads_ = false;
};

} // namespace quenby
