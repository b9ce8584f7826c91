// Panels in which the user chooses files. They never block. Threads: the main thread.
#pragma once

#include "core/CompletionGate.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QList>

#include <functional>

class QWidget;

namespace quenby {

// What a panel that chooses a folder asks about the folders it shows: absolute paths, as bytes.
struct FolderPanelRules {
    QByteArray directory;                                              // where it begins
    std::function<bool(const QByteArray& path)> panel_shouldEnableURL; // may be chosen
    std::function<QString(const QByteArray& path)> panel_validateURL;  // why a choice is refused; empty: it is not
    // The user went to another folder: where to go instead; null to stay.
    std::function<QByteArray(const QByteArray& path)> panel_didChangeToDirectoryURL;
};

class FilePanels : public PlatformService {
public:
    // Absolute local paths, as bytes; none when the user cancelled.
    using Chosen = std::function<void(const QList<QByteArray>& paths)>;

    // Several existing files, no folders (they can be opened, but not chosen). The prompt is the button's text.
    virtual CompletionTicket openFiles(QWidget* window, const QString& title, const QString& prompt, QObject* context,
                                       Chosen chosen) = 0;
    // One existing folder.
    virtual CompletionTicket openFolder(QWidget* window, const QString& title, const FolderPanelRules& rules,
                                        QObject* context, Chosen chosen) = 0;
    // One place to write a file to, which may exist: the user has agreed to its end then. Folders can be made. The
    // proposal is an absolute path; its folder is shown first.
    virtual CompletionTicket saveFile(QWidget* window, const QString& title, const QByteArray& proposal,
                                      QObject* context, Chosen chosen) = 0;
    // The same for whoever never replaces a file: the user is not asked whether to, and has agreed to nothing.
    virtual CompletionTicket saveNewFile(QWidget* window, const QString& title, const QByteArray& proposal,
                                         QObject* context, Chosen chosen) = 0;
};

} // namespace quenby
