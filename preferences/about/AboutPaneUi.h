// The About pane's widgets and where they stand. Owned by the pane that they are made for.
#pragma once

class QLabel;
class QPushButton;
class QWidget;

namespace quenby {

struct AboutPaneUi {
    explicit AboutPaneUi(QWidget* pane);

    QLabel* appicon;
    QLabel* txtAppName;
    QLabel* txtCopyRights;
    // From here on in the order of the Tab key.
    QPushButton* faq;
    QPushButton* twitter;
    QPushButton* fanPage;
    QPushButton* vantrel;
    QLabel* trouble; // on lines of its own
    QPushButton* licencesButton;
    QPushButton* diagnosticsButton;
    QLabel* confirmation; // beside that button
    QLabel* txtVersion;
};

} // namespace quenby
