#include "platform/linux/web/engine/EngineStart.h"

#include "platform/linux/desktop/Surrounding.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstring>
#include <utility>

namespace quenby {
namespace {

constexpr auto flagsVariable = "QTWEBENGINE_CHROMIUM_FLAGS";
constexpr auto settingsFlag = "--blink-settings";

// A filter is a plain function, and so has nowhere else to keep the one that it stands in for.
QLoggingCategory::CategoryFilter formerFilter = nullptr;

void quieterFilter(QLoggingCategory* category) {
    // Not yet known while it is being replaced; what it had decided stands then.
    if (formerFilter)
        formerFilter(category);
    if (std::strcmp(category->categoryName(), "qt.webenginecontext") != 0)
        return;
    category->setEnabled(QtDebugMsg, false);
    category->setEnabled(QtInfoMsg, false);
}

} // namespace

EngineStart::EngineStart()
    : hadFlags_(qEnvironmentVariableIsSet(flagsVariable))
    , flags_(qgetenv(flagsVariable)) {
    // Of two such flags the engine would take one only.
    if (isDark(QGuiApplication::palette()) && !flags_.contains(settingsFlag))
        qputenv(flagsVariable, QByteArray(flags_ + ' ' + settingsFlag + "=preferredColorScheme=0").trimmed());
    if (!qEnvironmentVariableIsSet("QT_LOGGING_RULES"))
        formerFilter = QLoggingCategory::installFilter(quieterFilter);
}

EngineStart::~EngineStart() {
    if (formerFilter)
        QLoggingCategory::installFilter(std::exchange(formerFilter, nullptr));
    if (hadFlags_)
        qputenv(flagsVariable, flags_);
    else
        qunsetenv(flagsVariable);
}

} // namespace quenby
