// The account view's widgets and where they stand. Owned by the view that they are made for.
#pragma once

class QLabel;
class QListView;
class QPushButton;
class QStackedLayout;
class QVBoxLayout;
class QWidget;

namespace quenby {

class QuotaBar;

struct AccountViewUi {
    explicit AccountViewUi(QWidget* view);

    QLabel* userName;
    QLabel* accountName;
    QPushButton* showChangesButton;
    QPushButton* menuButton;
    QLabel* quotaText;
    QuotaBar* quotaBar;
    QWidget* dropPlace;
    QVBoxLayout* dropLayout;
    QLabel* uploadCount;
    QPushButton* uploadButton;
    QStackedLayout* uploadsStack; // the list, or that there is nothing to list
    QListView* uploadList;
    QLabel* noUploads;
};

} // namespace quenby
