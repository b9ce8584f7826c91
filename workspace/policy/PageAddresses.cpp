#include "workspace/policy/NavigationPolicy.h"

#include <algorithm>
#include <initializer_list>

namespace quenby {
namespace {

bool hasEnding(const QString& path, std::initializer_list<const char*> endings) {
    return std::any_of(endings.begin(), endings.end(),
                       [&path](const char* ending) { return path.endsWith(QLatin1String(ending)); });
}

} // namespace

bool isPageAddress(const QUrl& url) {
    if (!url.isValid())
        return false;
    if (url.scheme() == QLatin1String("about"))
        return url.path() == QLatin1String("blank");
    const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return isWeb && !url.host().isEmpty() && url.userInfo().isEmpty();
}

bool isRefusalOfBrowser(const QUrl& url, const Endpoints& endpoints) {
    const WebPlaces& places = endpoints.webPlaces;
    const QString path = understoodPath(url);
    if (places.accounts.contains(url))
        return hasEnding(path, {"/signin/rejected", "/deniedsigninrejected", "/unsupported"});
    if (places.drive.contains(url) || places.docs.contains(url))
        return hasEnding(path, {"/unsupportedbrowser", "/unsupported"});
    return false;
}

} // namespace quenby
