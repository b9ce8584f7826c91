// The popover's widgets and where they stand. Owned by the window that they are made for.
#pragma once

#include <Qt>

class QBoxLayout;
class QHBoxLayout;
class QLabel;
class QWidget;

namespace quenby {

class ActivityIndicator;
class ContainView;
class ctmView;
class CustomButton;
class CustomWindow;
class Defaults;
class QuotaBar;

// In logical pixels.
inline constexpr int popoverWidth = 330;
inline constexpr int popoverHeaderHeight = 76; // at least; large fonts take more

struct PopoverUi {
    // The list is taken over.
    PopoverUi(CustomWindow& window, QWidget* changes, Defaults& defaults);

    // Puts the grip at the edge that moves.
    void setMovingEdge(Qt::Edge edge);
    // The indicator and the text that stand in for rows; the pane goes when both are gone.
    void showStatus(const QString& text, bool isBusy);
    void setDropTarget(QWidget* dropTarget);

    ContainView* containWindow; // header and list
    QLabel* userName;
    QLabel* accountName;
    QWidget* buttonview;
    QHBoxLayout* buttonLayout;
    CustomButton* addButton;
    CustomButton* gearButton;
    QuotaBar* quotaBar;
    QLabel* quotaText;
    QWidget* changes;
    QWidget* statusPane; // lies over the list
    ActivityIndicator* activityIndicator;
    QLabel* statusText;
    ctmView* grip;
    QBoxLayout* layout;
};

} // namespace quenby
