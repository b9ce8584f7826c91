// The module's entry: the engine with the profiles of the accounts that are shown.
#pragma once

#include "platform/linux/web/WebEngineModule.h"

#include <QObject>

namespace quenby {

class WebEngineModulePlugin final : public QObject, public WebEngineModule {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.quenby.WebEngineModule/2")
    Q_INTERFACES(quenby::WebEngineModule)

public:
    Result<std::unique_ptr<WebEngine>> start() override;
};

} // namespace quenby
