// One download in the list: its name, how far it is, and what can be done with it.
//
// Threads: the main thread.
#pragma once

#include "workspace/downloads/DownloadText.h"

#include <QWidget>

class QToolButton;

namespace quenby {

class ElidedLabel;
class SecondaryLabel;
class ThinProgressBar;

class DownloadRowView final : public QWidget {
    Q_OBJECT

public:
    explicit DownloadRowView(QWidget* parent = nullptr);

    // Shows what is new.
    void setDownload(const QString& name, const DownloadProgress& progress);

Q_SIGNALS:
    void pauseRequested();
    void resumeRequested();
    void cancelRequested();
    void showInFolderRequested();

private:
    ElidedLabel* name_;
    SecondaryLabel* detail_;
    ThinProgressBar* bar_;
    QToolButton* pause_;
    QToolButton* resume_;
    QToolButton* cancel_;
    QToolButton* show_;
};

} // namespace quenby
