// The welcome view's widgets and where they stand. Owned by the view that they are made for.
#pragma once

#include <QString>

class QLabel;
class QPushButton;
class QRadioButton;
class QWidget;

namespace quenby {

class ActivityIndicator;

struct WelcomeViewUi {
    explicit WelcomeViewUi(QWidget* view);

    // In the middle when it fits into a line, else wrapped.
    void setStatus(const QString& text);

    QPushButton* menuButton;
    QWidget* column; // all below; a window that is too low for it scrolls
    QLabel* picture;
    QWidget* access; // the two choices with what they mean
    QRadioButton* everything;
    QRadioButton* ownFiles;
    QPushButton* signInButton;
    QWidget* ownClient; // the button and the line below it
    QPushButton* ownClientButton;
    QLabel* clientInUse;
    QPushButton* localDriveButton;
    QWidget* statusRow;
    ActivityIndicator* activityIndicator;
    QLabel* troublePicture;
    QLabel* statusText;
    QPushButton* tryAgainButton;
};

} // namespace quenby
