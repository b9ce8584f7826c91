// What a share window consists of, and where it stands at first.
#pragma once

#include <QString>

class QGridLayout;

namespace quenby {

class ctmWindow;
class ProblemPane;
class ActivityIndicator;
class ShareTitleBar;

// The widgets belong to the window.
struct ShareWindowUi {
    explicit ShareWindowUi(ctmWindow& window);

    ShareTitleBar* titleBar;
    ActivityIndicator* progressIndicator;
    ProblemPane* problem;
    // The page, the indicator and the problem lie on one another in its one cell.
    QGridLayout* content;
};

// In the middle of the screen where the pointer is.
void centreShareWindow(ctmWindow& window);

} // namespace quenby
