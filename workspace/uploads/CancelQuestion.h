// Asks before uploads are cancelled. Threads: the main thread. It does not block: the answer comes later.
#pragma once

#include "workspace/uploads/QueueRows.h"

#include <QList>

#include <functional>

class QWidget;

namespace quenby {

// Modal to the window, and gone with it. Called when they are to be cancelled; not at all else.
void askWhetherToCancel(QWidget* window, const QList<QueueRow>& rows, std::function<void()> confirmed);

} // namespace quenby
