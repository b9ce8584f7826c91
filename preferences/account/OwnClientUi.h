// The widgets of the dialog for an own client, and where they stand. Owned by the dialog that they are made for.
#pragma once

class QDialog;
class QLabel;
class QPushButton;
class QScrollArea;
class QWidget;

namespace quenby {

class StepView;

struct OwnClientUi {
    explicit OwnClientUi(QDialog& dialog);

    // As high as the steps need, where the screen has the room; else they can be scrolled. Never lower than before.
    void fit(QDialog& dialog) const;
    // While something that may be dropped is over the dialog, its step is marked.
    void showDrop(bool mayDrop) const;

    QLabel* inUse;
    QScrollArea* scroller;
    QWidget* steps;
    StepView* registerStep;
    StepView* fileStep;
    StepView* trialStep;
    StepView* useStep;
    QPushButton* consoleButton;
    QPushButton* chooseButton;
    QPushButton* pasteButton;
    QPushButton* tryButton;
    QPushButton* formerButton; // Quenby's own client again
    QPushButton* cancelButton;
    QPushButton* useButton;
};

} // namespace quenby
