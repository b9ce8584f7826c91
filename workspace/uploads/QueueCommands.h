// What can be done with uploads of the queue, by their states, and where those go that are moved. Threads: any.
#pragma once

#include "workspace/uploads/QueueRows.h"

#include <QList>
#include <QSet>

#include <optional>

namespace quenby {

enum class QueueCommand { pause, resume, retry, cancel };

bool isPossible(QueueCommand command, QueueRow::State state);

// Whether cancelling these loses anything: what has been sent, or a list that somebody put together.
bool losesSomething(const QList<QueueRow>& cancelled);

enum class QueueMove { up, down, toTop, toBottom };

// The chosen among those that wait, one step further, or all the way. They keep their order among each other.
QList<qint64> movedOrder(QList<qint64> waiting, const QSet<qint64>& chosen, QueueMove move);
// The chosen stand together before this one, or last. It may be chosen itself: they stand where it stood.
QList<qint64> gatheredOrder(const QList<qint64>& waiting, const QSet<qint64>& chosen, std::optional<qint64> before);

} // namespace quenby
