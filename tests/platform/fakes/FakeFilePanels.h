// File panels that nobody sees. The test chooses or cancels when it likes.
#pragma once

#include "platform/FilePanels.h"

#include <QPointer>
#include <QWidget>

#include <utility>

namespace quenby::testing {

class FakeFilePanels final : public FilePanels {
public:
    struct Opened {
        QPointer<QWidget> window;
        QString title;
        QString prompt;      // of a panel that opens files
        QByteArray proposal; // of one that saves a file
        CompletionGate<QList<QByteArray>> chosen;
        FolderPanelRules rules{}; // of one that chooses a folder
    };

    CompletionTicket openFiles(QWidget* window, const QString& title, const QString& prompt, QObject* context,
                               Chosen chosen) override {
        return open({window, title, prompt, {}, CompletionGate<QList<QByteArray>>(context, std::move(chosen))});
    }
    CompletionTicket openFolder(QWidget* window, const QString& title, const FolderPanelRules& rules, QObject* context,
                                Chosen chosen) override {
        return open({window, title, {}, {}, CompletionGate<QList<QByteArray>>(context, std::move(chosen)), rules});
    }
    CompletionTicket saveFile(QWidget* window, const QString& title, const QByteArray& proposal, QObject* context,
                              Chosen chosen) override {
        return open({window, title, {}, proposal, CompletionGate<QList<QByteArray>>(context, std::move(chosen))});
    }
    CompletionTicket saveNewFile(QWidget* window, const QString& title, const QByteArray& proposal, QObject* context,
                                 Chosen chosen) override {
        return saveFile(window, title, proposal, context, std::move(chosen));
    }

    // Every panel that was opened, closed or not.
    const QList<Opened>& opened() const { return opened_; }
    qsizetype waiting() const { return opened_.size() - closed_; }

    // Ends the oldest panel that is open; the choice arrives through the event loop. False: none is open.
    bool choose(const QList<QByteArray>& paths) {
        if (waiting() == 0)
            return false;
        opened_.at(closed_++).chosen.deliver(paths);
        return true;
    }
    bool cancel() { return choose({}); }

private:
    CompletionTicket open(const Opened& panel) {
        opened_.append(panel);
        return panel.chosen.ticket();
    }

    QList<Opened> opened_;
    qsizetype closed_ = 0;
};

} // namespace quenby::testing
