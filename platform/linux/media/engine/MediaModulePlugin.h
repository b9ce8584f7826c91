// The module's entry.
#pragma once

#include "platform/linux/media/MediaModule.h"

#include <QObject>

namespace quenby {

class MediaModulePlugin final : public QObject, public MediaModule {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.quenby.MediaModule/1")
    Q_INTERFACES(quenby::MediaModule)

public:
    Result<std::unique_ptr<MediaEngine>> start() override;
};

} // namespace quenby
