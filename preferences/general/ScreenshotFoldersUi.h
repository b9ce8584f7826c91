// The widgets of the dialog of screenshot folders, and where they stand. Owned by the dialog that they are made for.
#pragma once

#include <QByteArray>
#include <QList>

class QDialog;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace quenby {

class NoticeLine;

// One folder as the list shows it.
struct ScreenshotFolderRow {
    enum class Kind { known, added, addedButNotThere };

    QByteArray path;
    Kind kind;

    friend bool operator==(const ScreenshotFolderRow&, const ScreenshotFolderRow&) = default;
};

struct ScreenshotFoldersUi {
    explicit ScreenshotFoldersUi(QDialog* dialog);

    // What is selected stays selected; where that is gone, its neighbour is.
    void showRows(const QList<ScreenshotFolderRow>& rows);
    void select(const QByteArray& path);
    // The folder that can be removed; null when none is selected.
    QByteArray selectedFolder() const;

    QTreeWidget* list;
    NoticeLine* notice;
    QPushButton* add;
    QPushButton* remove;

private:
    QList<ScreenshotFolderRow> rows_;
};

} // namespace quenby
