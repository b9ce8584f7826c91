// File panels as file dialogs: the desktop's own where it has one.
#pragma once

#include "platform/FilePanels.h"

#include <QObject>

class QFileDialog;

namespace quenby {

class DialogFilePanels final : public QObject, public FilePanels {
    Q_OBJECT

public:
    DialogFilePanels();
    // Closes what is open; nothing is answered any more.
    ~DialogFilePanels() override;

    CompletionTicket openFiles(QWidget* window, const QString& title, const QString& prompt, QObject* context,
                               Chosen chosen) override;
    CompletionTicket openFolder(QWidget* window, const QString& title, const FolderPanelRules& rules, QObject* context,
                                Chosen chosen) override;
    CompletionTicket saveFile(QWidget* window, const QString& title, const QByteArray& proposal, QObject* context,
                              Chosen chosen) override;
    CompletionTicket saveNewFile(QWidget* window, const QString& title, const QByteArray& proposal, QObject* context,
                                 Chosen chosen) override;

private:
    CompletionTicket save(QFileDialog& dialog, const QByteArray& proposal, QObject* context, Chosen chosen);
    QFileDialog* makePanel(QWidget* window, const QString& title) const;
    void setUp(QFileDialog& dialog) const;
    static void present(QFileDialog& dialog);

    QUrl folder_; // where the user chose last; for this run of the program
};

} // namespace quenby
