// A panel that chooses a folder by rules. No desktop's own panel can be told any, so that this is always the toolkit's.
//
// Threads: the main thread.
#pragma once

#include "platform/FilePanels.h"

#include <QFileDialog>

class QLabel;

namespace quenby {

class FolderPanel final : public QFileDialog {
    Q_OBJECT

public:
    FolderPanel(QWidget* parent, const QString& title, const FolderPanelRules& rules);

    // Whether there are rules at all.
    static bool isNeededFor(const FolderPanelRules& rules);

    // Refuses, with a sentence in the panel, what the rules refuse.
    void accept() override;

private:
    void followRules(const QString& folder);
    void tell(const QString& sentence);

    const FolderPanelRules rules_;
    QLabel* refusal_;
};

} // namespace quenby
