// The account pane's widgets and where they stand. Owned by the pane that they are made for.
#pragma once

class QLabel;
class QPushButton;
class QWidget;

namespace quenby {

class AccountFace;
class ServiceUsageBar;

struct AccountPaneUi {
    explicit AccountPaneUi(QWidget* pane);

    AccountFace* face;
    QLabel* user_name;
    QLabel* account_name;
    QLabel* quota; // "4.3 GB of 15 GB used", or what there is to tell instead
    QLabel* access;
    ServiceUsageBar* usage;
    QPushButton* ownClientButton;
    QPushButton* signInButton;
    QPushButton* signInAgainButton;
    QPushButton* logoutButton;
};

} // namespace quenby
