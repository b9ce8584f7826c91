// The pane of the signed-in user: picture, name, address, how the quota is used, and the way out.
//
// Threads: the main thread. It decides nothing: it tells what the user wants.
#pragma once

#include "core/AccountDisplay.h"
#include "core/AccountUsage.h"
#include "core/DriveAccess.h"

#include <QImage>
#include <QWidget>

#include <memory>
#include <optional>

namespace quenby {

struct AccountPaneUi;

class AccountPane : public QWidget {
    Q_OBJECT

public:
    explicit AccountPane(QWidget* parent = nullptr);
    ~AccountPane() override;

    // The display's names are empty, and what there is to tell stands in its quota, while nobody is signed in.
    void setAccount(const AccountDisplay& account, bool isSignedIn);
    // What the sign-in opens to the program; absent: nothing of the Drive. Nothing is told of it before, nor to
    // somebody who is not signed in.
    void setAccess(const std::optional<DriveAccess>& granted);
    // Absent until the account was fetched.
    void setUsage(const std::optional<AccountUsage>& usage);
    // Null: a drawn face.
    void setPicture(const QImage& picture);
    // Why there is no own client to choose; empty when there is.
    void setOwnClientRefused(const QString& sentence);

Q_SIGNALS:
    void logout_click();
    void signInRequested();
    // For other access.
    void signInAgainRequested();
    void ownClientRequested();

private:
    void showQuota();
    void showAccess();

    const std::unique_ptr<AccountPaneUi> ui_;
    AccountDisplay account_;
    bool isSignedIn_ = false;
    std::optional<AccountUsage> usage_;
    QString access_; // as a sentence; empty: there is nothing to tell
};

} // namespace quenby
