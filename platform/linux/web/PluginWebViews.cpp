#include "platform/linux/web/PluginWebViews.h"

#include "platform/linux/modules/ModuleFile.h"

#include <QCoreApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QStandardPaths>

QT_BEGIN_NAMESPACE
// Exported by Qt Gui for its own modules, unchanged since Qt 5.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);
QT_END_NAMESPACE

namespace quenby {
namespace {

const QString moduleName = QStringLiteral("quenby-webengine");

QString notLoaded(const QString& detail) {
    return QStringLiteral("Web pages cannot be shown, because the web engine could not be loaded. Install it (on "
                          "Debian the package libqt6webenginewidgets6) and try again. Details: %1")
        .arg(detail);
}

// Whether there is real graphics hardware. Drawn by the processor, contexts that several threads share can wait for
// each other for ever (seen with Mesa 22.3); the engine's own drawing does without them and is no slower.
bool isAccelerated(QOpenGLContext& context) {
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!context.makeCurrent(&surface))
        return false;
    const auto* name = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
    const QString renderer = QString::fromLatin1(name).toLower();
    context.doneCurrent();
    for (const char* software : {"llvmpipe", "softpipe", "swrast", "software rasterizer"}) {
        if (renderer.contains(QLatin1String(software)))
            return false;
    }
    return !renderer.isEmpty();
}

// The engine needs the context that all others share before it is loaded. Qt makes one with the application when it is
// asked to by AA_ShareOpenGLContexts, which costs 30 MiB and more than half of the time of the start, pages or not.
void provideShareContext() {
    if (QOpenGLContext::globalShareContext())
        return;
    auto context = std::make_unique<QOpenGLContext>();
    context->setFormat(QSurfaceFormat::defaultFormat());
    // The engine asks for the context even when it does not draw with it.
    if ((!context->create() || !isAccelerated(*context)) && !qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        qputenv("QT_QUICK_BACKEND", "software");
    qt_gl_set_global_share_context(context.release());
    // These run in reverse order, so that this comes after the engine's own, with the display still there.
    qAddPostRoutine([] {
        delete QOpenGLContext::globalShareContext();
        qt_gl_set_global_share_context(nullptr);
    });
}

} // namespace

PluginWebViewsPlaces PluginWebViewsPlaces::standard(const QString& profile) {
    const auto below = [&profile](QStandardPaths::StandardLocation location) {
        return QString(QStandardPaths::writableLocation(location) + QLatin1Char('/') + profile +
                       QStringLiteral("/web"));
    };
    return {below(QStandardPaths::GenericDataLocation), below(QStandardPaths::GenericCacheLocation),
            quenby::moduleFolders()};
}

PluginWebViews::PluginWebViews(const PluginWebViewsPlaces& places)
    : moduleFolders_(places.moduleFolders)
    , folders_(places.dataRoot, places.cacheRoot) {}

PluginWebViews::~PluginWebViews() = default;

Result<std::unique_ptr<WebView>> PluginWebViews::create(const WebViewProfile& profile) {
    if (!engine_ && !load())
        return unavailable();
    return engine_->createView(foldersOf(profile), profile.userAgent);
}

Result<std::unique_ptr<BrowserView>> PluginWebViews::createBrowser(const WebViewProfile& profile) {
    if (!engine_ && !load())
        return unavailable();
    return engine_->createBrowserView(foldersOf(profile), profile.userAgent);
}

void PluginWebViews::forget(const QString& account) {
    const WebProfileFolders left = folders_.leave(account);
    if (engine_)
        engine_->forget(left);
    else
        AccountWebFolders::remove(left);
}

WebProfileFolders PluginWebViews::foldersOf(const WebViewProfile& profile) {
    return profile.account.isEmpty() ? WebProfileFolders() : folders_.foldersOf(profile.account);
}

Error PluginWebViews::unavailable() const {
    return Error(URLErrorCode::unknown, {{errorKey::reason, unavailableBecause_}});
}

// A failure is tried again with the next page: the user may have installed what was missing.
bool PluginWebViews::load() {
    const auto fail = [this](const QString& sentence) {
        unavailableBecause_ = sentence;
        return false;
    };
    if (isModuleThere(moduleFolders_, moduleName))
        provideShareContext();
    const auto module = loadModule<WebEngineModule>(moduleFolders_, moduleName);
    if (!module)
        return fail(notLoaded(module.error().detail(errorKey::reason).toString()));
    auto engine = (*module)->start();
    if (!engine)
        return fail(engine.error().detail(errorKey::reason).toString());
    engine_ = std::move(engine).value();
    unavailableBecause_.clear();
    return true;
}

} // namespace quenby
