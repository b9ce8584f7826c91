#include "workspace/uploads/QueueCommands.h"

#include <algorithm>
#include <functional>

namespace quenby {
namespace {

using State = QueueRow::State;

constexpr qsizetype several = 2;

// The iterators give the direction. Those that stand at its end already, one behind the other, stay.
template <typename Iterator>
void moveOneStep(Iterator first, Iterator last, const QSet<qint64>& chosen) {
    if (first == last)
        return;
    for (Iterator former = first, current = first + 1; current != last; former = current++) {
        if (chosen.contains(*current) && !chosen.contains(*former))
            std::iter_swap(former, current);
    }
}

} // namespace

bool isPossible(QueueCommand command, State state) {
    switch (command) {
    case QueueCommand::pause:
        return state == State::waiting || state == State::running || state == State::resting;
    case QueueCommand::resume:
        return state == State::paused;
    case QueueCommand::retry:
        return state == State::failed || state == State::changed;
    case QueueCommand::cancel:
        return state != State::done;
    }
    return false;
}

bool losesSomething(const QList<QueueRow>& cancelled) {
    const auto isOver = [](const QueueRow& row) {
        return row.state == State::failed || row.state == State::changed || row.state == State::done;
    };
    const qsizetype begun = std::count_if(cancelled.begin(), cancelled.end(),
                                          [&isOver](const QueueRow& row) { return row.sent > 0 && !isOver(row); });
    const qsizetype open = cancelled.size() - std::count_if(cancelled.begin(), cancelled.end(), isOver);
    return begun > 0 || open >= several;
}

QList<qint64> movedOrder(QList<qint64> waiting, const QSet<qint64>& chosen, QueueMove move) {
    const auto isChosen = [&chosen](qint64 number) { return chosen.contains(number); };
    switch (move) {
    case QueueMove::up:
        moveOneStep(waiting.begin(), waiting.end(), chosen);
        break;
    case QueueMove::down:
        moveOneStep(waiting.rbegin(), waiting.rend(), chosen);
        break;
    case QueueMove::toTop:
        std::stable_partition(waiting.begin(), waiting.end(), isChosen);
        break;
    case QueueMove::toBottom:
        std::stable_partition(waiting.begin(), waiting.end(), std::not_fn(isChosen));
        break;
    }
    return waiting;
}

QList<qint64> gatheredOrder(const QList<qint64>& waiting, const QSet<qint64>& chosen, std::optional<qint64> before) {
    const qsizetype place = before ? waiting.indexOf(*before) : -1;
    QList<qint64> order = waiting;
    const auto middle = order.begin() + (place < 0 ? order.size() : place);
    std::stable_partition(order.begin(), middle, [&chosen](qint64 number) { return !chosen.contains(number); });
    std::stable_partition(middle, order.end(), [&chosen](qint64 number) { return chosen.contains(number); });
    return order;
}

} // namespace quenby
