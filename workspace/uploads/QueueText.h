// The upload queue in words: how far each upload is, and all of them. Threads: any.
#pragma once

#include "workspace/uploads/QueueRows.h"

#include <QList>
#include <QString>

#include <chrono>

namespace quenby {

// 0 to 100; -1: not known.
int queuePercent(const QueueRow& row);
// "3.2 MB of 10 MB — 1.1 MB/s — about 2 minutes left", "Waiting — 10 MB", or what is the matter.
QString queueStateText(const QueueRow& row);
// For those who do not see the row: "Report.pdf, running, 32%".
QString queueSpokenText(const QueueRow& row);
// All that is known, in several lines: a row may have room for less.
QString queueTip(const QueueRow& row);

// In steps that are as coarse as the guess is, so that it stands still for a while: "about 10 minutes left".
QString timeLeftText(std::chrono::seconds timeLeft);
// "4 running, 12 waiting, 2 failed — 1.2 MB/s — about 10 minutes left"; empty when there are none. Those that go on by
// themselves wait, too.
QString queueSummary(const QList<QueueRow>& rows, bool isAllPaused);

} // namespace quenby
