// The desktop program with somebody signed in, and its workspace's tabs as they can be used and seen.
//
// Threads: the main thread. The calls run the event loop while they wait, and give up after QuenbyProcess::patience.
#pragma once

#include "core/PageOpenRecord.h"
#include "tests/desktop/support/AgentStage.h"
#include "tests/desktop/support/PageInspector.h"

namespace quenby::testing {

class WorkspaceStage : public AgentStage {
public:
    PageInspector inspector{home.environment()};

    // Starts the program, signs in, and waits for the Drive's page. The local Drive runs already.
    bool startWithDrive();
    // The window has the keyboard then.
    bool activateWindow();
    // By the pointer; see PageInspector::waitForPlace().
    bool clickIn(const QString& path, const QString& element);
    // Chooses from the toolbar's menu, by the entry's mnemonic, and waits for the editor of that kind of document,
    // which must be the first one.
    bool makeDocument(const QString& mnemonic, const QString& kind);
    // Types it into the first field, and waits until the page has saved it.
    bool writeInDocument(const QString& kind, const QString& text);
    // The tabs that another start would find.
    QList<PageOpenRecord> keptTabs() const;
    // Whether the pages would still be signed in.
    bool areCookiesKept() const;
    // Of the program's pages, which are processes of their own.
    QList<qint64> pageProcesses() const;
};

} // namespace quenby::testing
