// The review window's widgets and where they stand. Owned by the window that they are made for.
#pragma once

class QLabel;
class QPushButton;
class QString;
class QWidget;

namespace quenby {

class ActivityIndicator;
class ElidedLabel;
class PlayerPane;
class ReviewWindow;

struct ShareVideoUi {
    explicit ShareVideoUi(ReviewWindow& window);

    // On several lines when its words fit into them.
    void setFileName(const QString& name);
    // The picture and what plays it, and nothing else.
    void setPlayerAlone(bool isAlone);
    // While a copy is made, whatever would close the window waits.
    void setSaving(bool isSaving);

    PlayerPane* playerView;
    QWidget* side;
    ElidedLabel* fileName;
    QLabel* videoSize;
    QLabel* videoDuration;
    QLabel* videoFileSize;
    QPushButton* uploadButton;
    QPushButton* saveButton;
    QPushButton* openButton;
    QPushButton* recordAgainButton;
    QPushButton* discardButton;
    QWidget* savingRow;
};

} // namespace quenby
