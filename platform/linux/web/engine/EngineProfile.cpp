#include "platform/linux/web/engine/EngineProfile.h"

#include "platform/linux/web/engine/EngineDownload.h"
#include "platform/linux/web/engine/EnginePage.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QWebEngineDownloadRequest>
#include <QWebEngineSettings>

namespace quenby {
namespace {

// By its page, whose view says what becomes of it; of a page that is gone, nobody does.
void takeDownload(QWebEngineProfile& profile, QWebEngineDownloadRequest& request) {
    if (EngineDownload::goesOnWith(profile, request))
        return;
    if (auto* page = qobject_cast<EnginePage*>(request.page()))
        page->offerDownload(request);
    else
        request.cancel();
}

void applyRules(QWebEngineProfile& profile) {
    QWebEngineSettings& settings = *profile.settings();
    const auto set = [&settings](QWebEngineSettings::WebAttribute attribute, bool on) {
        settings.setAttribute(attribute, on);
    };
    set(QWebEngineSettings::JavascriptCanOpenWindows, true); // so that the view is asked; it opens none
    set(QWebEngineSettings::ErrorPageEnabled, false);        // whoever shows the view says what went wrong
    set(QWebEngineSettings::PluginsEnabled, false);
    set(QWebEngineSettings::PdfViewerEnabled, false); // it would print itself instead of the document
    set(QWebEngineSettings::HyperlinkAuditingEnabled, false);
    set(QWebEngineSettings::LocalContentCanAccessFileUrls, false);
    set(QWebEngineSettings::NavigateOnDropEnabled, false);
    set(QWebEngineSettings::WebRTCPublicInterfacesOnly, true);
    set(QWebEngineSettings::DnsPrefetchEnabled, false);
    set(QWebEngineSettings::FocusOnNavigationEnabled, false);
    profile.setHttpAcceptLanguage(QLocale().uiLanguages().join(QLatin1Char(',')));
    profile.setSpellCheckEnabled(false);
    QObject::connect(&profile, &QWebEngineProfile::downloadRequested, &profile,
                     [&profile](QWebEngineDownloadRequest* request) { takeDownload(profile, *request); });
}

// Cookies open accounts: nobody else may read them.
void makePrivateFolder(const QString& path) {
    QDir().mkpath(path);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

std::shared_ptr<QWebEngineProfile> makeEngineProfile(const WebProfileFolders& folders) {
    if (folders.data.isEmpty()) {
        const auto profile = std::make_shared<QWebEngineProfile>();
        applyRules(*profile);
        return profile;
    }
    makePrivateFolder(folders.data);
    makePrivateFolder(folders.cache);
    const auto profile = std::make_shared<QWebEngineProfile>(QFileInfo(folders.data).fileName());
    profile->setPersistentStoragePath(folders.data);
    profile->setCachePath(folders.cache);
    profile->setHttpCacheType(QWebEngineProfile::DiskHttpCache);
    profile->setPersistentCookiesPolicy(QWebEngineProfile::AllowPersistentCookies);
    applyRules(*profile);
    return profile;
}

} // namespace quenby
