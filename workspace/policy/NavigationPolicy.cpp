#include "workspace/policy/NavigationPolicy.h"

#include "workspace/policy/AddressPieces.h"
#include "workspace/policy/NavigationRules.h"
#include "workspace/policy/TabTitles.h"

#include <QLoggingCategory>

namespace quenby {
namespace {

// Addresses may carry secrets, so only the rule's name goes to the log.
Q_LOGGING_CATEGORY(policyLog, "quenby.navigation", QtInfoMsg)

PageOpenRecord pageToOpen(const char* title, const QUrl& url) { return {.title = QLatin1String(title), .url = url}; }

// What comes from elsewhere than a web server is never a page of its own: no local file, no script and no other
// program's scheme. A blob is content that a page of the tab made, with that page's rights and no other: the engine
// shows it, or makes a download of it. Frames may be filled by their page as well.
bool mayBeLoaded(const PageRequest& page) {
    const QUrl& url = page.request;
    if (isPageAddress(url))
        return true;
    if (url.scheme() == QLatin1String("blob"))
        return !page.isMainFrame || isPageAddress(QUrl(url.path(QUrl::FullyEncoded)));
    const bool isFilledByItsPage = url.scheme() == QLatin1String("data") ||
                                   (url.scheme() == QLatin1String("about") && url.path() == QLatin1String("srcdoc"));
    return !page.isMainFrame && isFilledByItsPage;
}

} // namespace

PageDecision decidePolicyForNavigationAction(const PageRequest& page, const Endpoints& endpoints) {
    if (!mayBeLoaded(page))
        return {.verdict = PageVerdict::ignore};
    for (const NavigationRule& rule : navigationRules()) {
        if (!rule.matches(page, endpoints.webPlaces))
            continue;
        qCDebug(policyLog, "decided by: %s", rule.name);
        PageDecision decision{.verdict = rule.verdict};
        if (rule.newTabTitle)
            decision.newTab = pageToOpen(rule.newTabTitle, page.request);
        return decision;
    }
    return {};
}

PageDecision decidePolicyForNewWindowAction(const QUrl& request, const Endpoints& endpoints) {
    const WebPlaces& places = endpoints.webPlaces;
    // An empty window that a script would fill has nothing to show in place of the page that opens it.
    if (!isPageAddress(request) || request.scheme() == QLatin1String("about"))
        return {.verdict = PageVerdict::ignore};
    if (isStoragePage(request, places))
        return {.verdict = PageVerdict::openOutside};
    const bool isMap = places.search.contains(request) && hasPiece(request, QLatin1String("maps/d/drive"));
    if (!places.docs.contains(request) && !isMap)
        return {.verdict = PageVerdict::use};
    return {.verdict = PageVerdict::ignore, .newTab = pageToOpen(docsTabTitle, request)};
}

PageVerdict decidePolicyForMIMEType(const QUrl& request, const Endpoints& endpoints) {
    const WebPlaces& places = endpoints.webPlaces;
    const QString documents = QStringLiteral("/document/");
    const bool isDocument =
        places.docs.within(documents).contains(request) || places.providerDomain.within(documents).contains(request);
    const bool isFile = (isDocument && hasPiece(request, QLatin1String("/export?format="))) ||
                        places.userContent.within(QStringLiteral("/docs/securesc")).contains(request);
    return isFile ? PageVerdict::download : PageVerdict::use;
}

PageOpenRecord createWebViewWithRequest(const QUrl& request) {
    return pageToOpen(printTabTitle, isPageAddress(request) ? request : QUrl(QStringLiteral("about:blank")));
}

} // namespace quenby
