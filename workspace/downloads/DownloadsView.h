// The list of downloads. It takes no room while there are none.
//
// Threads: the main thread. The downloads outlive it.
#pragma once

#include <QWidget>

#include <vector>

class QToolButton;
class QVBoxLayout;

namespace quenby {

class DownloadRowView;
class Downloads;

class DownloadsView final : public QWidget {
    Q_OBJECT

public:
    explicit DownloadsView(Downloads& downloads, QWidget* parent = nullptr);

private:
    void insertRows(int first, int last);
    void removeRows(int first, int last);
    void showRows(int first, int last);
    void countRows();
    int rowOf(const DownloadRowView* view) const;

    Downloads& downloads_;
    QVBoxLayout* list_;
    QToolButton* clear_;
    std::vector<DownloadRowView*> rows_;
};

} // namespace quenby
