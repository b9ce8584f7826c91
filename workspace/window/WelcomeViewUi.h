// The welcome view's widgets and where they stand. Owned by the view that they are made for.
#pragma once

#include <QString>

class QLabel;
class QPushButton;
class QWidget;

namespace quenby {

class ActivityIndicator;

struct WelcomeViewUi {
    explicit WelcomeViewUi(QWidget* view);

    // In the middle when it fits into a line, else wrapped.
    void setStatus(const QString& text);

    QPushButton* menuButton;
    QLabel* picture;
    QPushButton* signInButton;
    QPushButton* localDriveButton;
    QWidget* statusRow;
    ActivityIndicator* activityIndicator;
    QLabel* troublePicture;
    QLabel* statusText;
    QPushButton* tryAgainButton;
};

} // namespace quenby
