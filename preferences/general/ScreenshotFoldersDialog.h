// The folders in which screenshots are looked for: those that are known, and those that the user adds and removes.
//
// Threads: the main thread. What it is given outlives it. Every change is stored at once.
#pragma once

#include "core/CompletionGate.h"

#include <QByteArray>
#include <QDialog>
#include <QHash>
#include <QList>

#include <memory>

namespace quenby {

class Defaults;
class FilePanels;
class ScreenshotQuery;
struct ScreenshotFoldersUi;

class ScreenshotFoldersDialog : public QDialog {
    Q_OBJECT

public:
    ScreenshotFoldersDialog(Defaults& defaults, FilePanels& panels, const ScreenshotQuery& query, QWidget* parent);
    ~ScreenshotFoldersDialog() override;

protected:
    void changeEvent(QEvent* event) override;

private:
    // What the disk says of a folder.
    struct FolderFacts {
        bool isThere = false;
        QByteArray canonical; // its path without links
    };
    using Facts = QHash<QByteArray, FolderFacts>; // by path

    void refresh();
    void showRows();
    void add();
    void addUnlessThere(const QByteArray& folder);
    void removeSelected();
    QList<QByteArray> allFolders() const;
    // Looks on a thread of its own; what is not told in time belongs to an earlier question.
    CompletionTicket look(const QList<QByteArray>& folders, std::function<void(const Facts&)> seen);

    Defaults& defaults_;
    FilePanels& panels_;
    const ScreenshotQuery& query_;
    const std::unique_ptr<ScreenshotFoldersUi> ui_;
    Facts facts_;
    CompletionTicket refreshing_;
    CompletionTicket panel_;
};

} // namespace quenby
