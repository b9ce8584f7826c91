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
};

} // namespace quenby
