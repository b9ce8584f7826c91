// The account view's widgets and where they stand. Owned by the view that they are made for.
#pragma once

class QLabel;
class QListView;
class QPushButton;
class QToolButton;
class QVBoxLayout;
class QWidget;

namespace quenby {

class QuotaBar;

struct AccountViewUi {
    explicit AccountViewUi(QWidget* view);

    // As high as so many rows, within reason.
    void setUploadRows(int count);
    void setDropHeight(bool isSmall);

    QLabel* userName;
    QLabel* accountName;
    QLabel* quotaText;
    QuotaBar* quotaBar;
    QWidget* dropPlace;
    QVBoxLayout* dropLayout;
    QPushButton* uploadButton;
    QToolButton* allUploadsButton;
    QWidget* uploads; // what is said of them; hidden while there are none
    QLabel* uploadCount;
    QListView* uploadList;
};

} // namespace quenby
