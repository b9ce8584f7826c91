#include "workspace/share/ShareWindowUi.h"

#include "widgets/ActivityIndicator.h"
#include "widgets/ProblemPane.h"
#include "workspace/share/ShareFrame.h"
#include "workspace/share/ShareTitleBar.h"
#include "workspace/share/ctmWindow.h"

#include <QCursor>
#include <QGridLayout>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

namespace quenby {
namespace {

constexpr QSize initialSize(480, 476);
constexpr int border = 1;
constexpr int wheelDiameter = 28;

} // namespace

ShareWindowUi::ShareWindowUi(ctmWindow& window)
    : titleBar(new ShareTitleBar(&window))
    , progressIndicator(new ActivityIndicator(&window))
    , problem(new ProblemPane(&window))
    , content(new QGridLayout) {
    progressIndicator->setDiameter(wheelDiameter);
    progressIndicator->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    progressIndicator->setAutoFillBackground(true); // the page below is not to be seen before it is whole
    progressIndicator->setAccessibleName(QStringLiteral("Loading"));
    content->setContentsMargins(0, 0, 0, 0);
    content->addWidget(progressIndicator, 0, 0);
    content->addWidget(problem, 0, 0);
    problem->hide();

    auto* layout = new QVBoxLayout(&window);
    layout->setContentsMargins(border, border, border, border);
    layout->setSpacing(0);
    layout->addWidget(titleBar);
    layout->addLayout(content, 1);
    // Any dialog may be lower than what the widgets would like to have.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
}

void centreShareWindow(ctmWindow& window) {
    const QScreen* pointed = QGuiApplication::screenAt(QCursor::pos());
    const QScreen* screen = pointed ? pointed : QGuiApplication::primaryScreen();
    const QRect area = screen->geometry();
    const int left = area.x() + (area.width() - initialSize.width()) / 2;
    // The height at which a page's dialog will stand, so that the window need not jump.
    const QRect frame = shareFrame({QPoint(left, 0), initialSize}, area, initialSize.height() - shareWindowMargin);
    window.setGeometry(keptInside(frame, screen->availableGeometry()));
}

} // namespace quenby
