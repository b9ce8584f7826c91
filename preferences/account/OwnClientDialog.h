// The way to an own client, in steps that are explained and checked one by one: make it in the provider's console,
// paste or drop its file, try it, use it.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "preferences/account/OwnClient.h"

#include <QDialog>

#include <memory>
#include <optional>

class QMimeData;

namespace quenby {

class FilePanels;
class Opener;
struct OwnClientUi;

class OwnClientDialog : public QDialog {
    Q_OBJECT

public:
    OwnClientDialog(OwnClients& clients, FilePanels& panels, Opener& opener, QWidget* parent);
    ~OwnClientDialog() override;

protected:
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void openConsole();
    void choose();
    void paste();
    void take(const QMimeData& given);
    void read(const QByteArray& json);
    void beginTrial();
    void forget();
    void refresh();

    OwnClients& clients_;
    FilePanels& panels_;
    Opener& opener_;
    const std::unique_ptr<OwnClientUi> ui_;
    std::optional<OwnClient> read_;
    CompletionTicket reading_;
    CompletionTicket trial_;
};

} // namespace quenby
