// Panels in which the user chooses files. They never block. Threads: the main thread.
#pragma once

#include "core/CompletionGate.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QList>

#include <functional>

class QWidget;

namespace quenby {

class FilePanels : public PlatformService {
public:
    // Absolute local paths, as bytes; none when the user cancelled.
    using Chosen = std::function<void(const QList<QByteArray>& paths)>;

    // Several existing files, no folders (they can be opened, but not chosen). The prompt is the button's text.
    virtual CompletionTicket openFiles(QWidget* window, const QString& title, const QString& prompt, QObject* context,
                                       Chosen chosen) = 0;
    // One place to write a file to, which may exist: the user has agreed to its end then. Folders can be made. The
    // proposal is an absolute path; its folder is shown first.
    virtual CompletionTicket saveFile(QWidget* window, const QString& title, const QByteArray& proposal,
                                      QObject* context, Chosen chosen) = 0;
    // The same for whoever never replaces a file: the user is not asked whether to, and has agreed to nothing.
    virtual CompletionTicket saveNewFile(QWidget* window, const QString& title, const QByteArray& proposal,
                                         QObject* context, Chosen chosen) = 0;
};

} // namespace quenby
