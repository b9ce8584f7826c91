// What every FilePanels must do.
#pragma once

#include "platform/FilePanels.h"

#include <QTest>
#include <QWidget>

#include <functional>

namespace quenby::testing {

// The user in front of the screen.
struct FilePanelsUser {
    std::function<void(const QList<QByteArray>&)> chooses;
    std::function<void()> cancels;
};

inline void filePanelsKeepTheirContract(FilePanels& panels, QWidget& window, const QList<QByteArray>& files,
                                        const FilePanelsUser& user) {
    QList<QList<QByteArray>> chosen;
    QObject context;
    const auto open = [&] {
        return panels.openFiles(&window, QStringLiteral("Upload File"), QStringLiteral("Upload"), &context,
                                [&chosen](const QList<QByteArray>& paths) { chosen.append(paths); });
    };
    open();
    QVERIFY(chosen.isEmpty());
    user.chooses(files);
    QTRY_COMPARE(chosen.size(), 1);
    QCOMPARE(chosen.takeFirst(), files);

    open();
    user.cancels();
    QTRY_COMPARE(chosen.size(), 1);
    QCOMPARE(chosen.takeFirst(), QList<QByteArray>());

    const CompletionTicket ticket = open();
    QVERIFY(ticket.cancel());
    user.chooses(files);
    open();
    user.cancels();
    QTRY_COMPARE(chosen.size(), 1);
    QVERIFY(chosen.first().isEmpty());
}

// The panel that chooses one folder. The user is given the folder's path.
inline void folderPanelsKeepTheirContract(FilePanels& panels, QWidget& window, const FolderPanelRules& rules,
                                          const QByteArray& folder, const FilePanelsUser& user) {
    QList<QList<QByteArray>> chosen;
    QObject context;
    const auto open = [&] {
        return panels.openFolder(&window, QStringLiteral("Choose a Folder"), rules, &context,
                                 [&chosen](const QList<QByteArray>& paths) { chosen.append(paths); });
    };
    open();
    QVERIFY(chosen.isEmpty());
    user.chooses({folder});
    QTRY_COMPARE(chosen.size(), 1);
    QCOMPARE(chosen.takeFirst(), QList<QByteArray>{folder});

    const CompletionTicket ticket = open();
    QVERIFY(ticket.cancel());
    user.chooses({folder});
    open();
    user.cancels();
    QTRY_COMPARE(chosen.size(), 1);
    QVERIFY(chosen.first().isEmpty());
}

} // namespace quenby::testing
