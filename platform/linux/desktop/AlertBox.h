// The message box of one alert.
#pragma once

#include "platform/Alerts.h"

#include <QMessageBox>

#include <functional>

namespace quenby {

// Shows the alert and answers at once. The box deletes itself when it is dismissed, after the pressed button's index
// was told; it dies with its window, then untold. A window that is not on the screen is left alone: the box stands for
// itself and comes to the front.
QMessageBox* openAlertBox(const Alert& alert, QWidget* window, QObject* context, std::function<void(int)> pressed);

} // namespace quenby
