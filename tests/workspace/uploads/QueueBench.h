// Rows of an upload queue for tests.
#pragma once

#include "workspace/uploads/QueueRows.h"

#include <QStringList>

namespace quenby::testing {

inline constexpr qint64 megabyte = 1024 * 1024;

inline QueueRow queueRow(qint64 number, QueueRow::State state, qint64 sent = 0) {
    QueueRow row;
    row.number = number;
    row.name = QStringLiteral("file %1.txt").arg(number);
    row.state = state;
    row.sent = sent;
    row.total = 10 * megabyte;
    return row;
}

// "3 1 2"
template <typename Numbers>
QString numbersText(const Numbers& numbers) {
    QStringList texts;
    for (const qint64 number : numbers)
        texts += QString::number(number);
    return texts.join(QLatin1Char(' '));
}

inline QString orderOf(const QueueRows& rows) {
    QList<qint64> numbers;
    for (const QueueRow& row : rows.rows())
        numbers += row.number;
    return numbersText(numbers);
}

} // namespace quenby::testing
