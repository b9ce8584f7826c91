// The tabs of the last run, as they are kept in the settings.
//
// Under "OldTabs" there is an array of records in tab order, each a dictionary with "title", "url", "account" and
// "WindowName". It is kept as JSON text, so that the settings file can be read; an array of maps is understood as well.
// The selected tab's index is under "OldTabsSelected".
//
// Whatever stands there is taken for what it can be: records without an address, addresses that do not belong into a
// tab and anything that is no record are left out, and there is an end to how many are read. The same limits hold for
// what is written, and an address that holds a secret is written without its query. Threads: the main thread.
#pragma once

#include "core/PageOpenRecord.h"

#include <QList>

#include <optional>

namespace quenby {

class Defaults;

inline constexpr int mostOldTabs = 100;
inline constexpr qsizetype longestOldTitle = 500;        // characters; what is beyond is cut off
inline constexpr qsizetype longestOldAddress = 8 * 1024; // bytes; a longer one is left out

// In tab order; the account and the window's name are never read back. Nothing when the key is absent; an empty list
// when nothing of what is there can be used.
std::optional<QList<PageOpenRecord>> readOldTabs(const Defaults& defaults);
// Writes only what is new. Without any record that can be kept, what is there stays.
void writeOldTabs(Defaults& defaults, const QList<PageOpenRecord>& records);
// Also which was selected, and whose they were.
void removeOldTabs(Defaults& defaults);

// Which of them was selected; 0 when that is not known.
int readSelectedTab(const Defaults& defaults, int count);
void writeSelectedTab(Defaults& defaults, int index);

// Whose they are; empty: not known. Nobody is shown another one's tabs.
QString readUserOfOldTabs(const Defaults& defaults);
void writeUserOfOldTabs(Defaults& defaults, const QString& user);

} // namespace quenby
