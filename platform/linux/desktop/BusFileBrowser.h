// Files shown by the file manager that answers on the session bus.
#pragma once

#include "platform/FileBrowser.h"

#include <QObject>

namespace quenby {

class BusFileBrowser final : public QObject, public FileBrowser {
public:
    void reveal(const QByteArray& path, QObject* context, Done done) override;
};

} // namespace quenby
