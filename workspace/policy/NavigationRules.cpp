#include "workspace/policy/NavigationRules.h"

#include "workspace/policy/AddressPieces.h"
#include "workspace/policy/ExportLinks.h"
#include "workspace/policy/TabTitles.h"

#include <algorithm>

namespace quenby {
namespace {

bool isInOneOf(const QList<WebPlace>& places, const QUrl& url) {
    return std::any_of(places.begin(), places.end(), [&url](const WebPlace& place) { return place.contains(url); });
}

bool sourceIsUnknown(const PageRequest& page, const WebPlaces&) { return page.source.isEmpty(); }

bool asksToLeaveTheService(const PageRequest& page, const WebPlaces& places) {
    return places.accounts.within(QStringLiteral("/Logout")).isAt(page.request) &&
           page.request.query(QUrl::FullyEncoded) == QLatin1String("service=wise");
}

bool isMap(const PageRequest& page, const WebPlaces& places) { return places.maps.contains(page.source); }

bool isAnySignOut(const PageRequest& page, const WebPlaces& places) {
    const QString address = understoodPath(page.source) + QLatin1Char('?') + page.source.query(QUrl::FullyEncoded);
    return places.accounts.contains(page.source) && address.contains(QLatin1String("Logout"));
}

bool isShareTarget(const PageRequest& page, const WebPlaces& places) {
    return isInOneOf(places.shareTargets, page.source);
}

bool addsAnAccount(const PageRequest& page, const WebPlaces& places) {
    return places.accounts.within(QStringLiteral("/AddSession")).contains(page.source);
}

bool isFrameOfNotifications(const PageRequest& page, const WebPlaces& places) {
    return places.socialNetwork.within(QStringLiteral("/u/0/_/notifications/frame")).isAt(page.source);
}

bool isSocialNetwork(const PageRequest& page, const WebPlaces& places) {
    return places.socialNetwork.contains(page.source);
}

// The frame that the Drive itself shows of the storage page; the whole page has another query or none.
constexpr QLatin1String storageFrame("settings/storage?authuser=0");

bool isStoragePage(const PageRequest& page, const WebPlaces& places) {
    return isStoragePage(page.source, places) && !hasPiece(page.source, storageFrame);
}

bool isFrameOfSearchSite(const PageRequest& page, const WebPlaces& places) {
    return places.search.containsInEitherScheme(page.source) &&
           (hasPiece(page.source, storageFrame) ||
            hasPiece(page.source, QLatin1String("tools/feedback/content_frame")) ||
            hasPiece(page.source, QLatin1String("tools/feedback/submit_frame")) ||
            hasPiece(page.source, QLatin1String("cloudprint/gadget.html")));
}

bool isSearchSite(const PageRequest& page, const WebPlaces& places) {
    return places.search.containsInEitherScheme(page.source);
}

bool isExternalSite(const PageRequest& page, const WebPlaces& places) {
    return isInOneOf(places.externalSites, page.source);
}

bool isLegalNotice(const PageRequest& page, const WebPlaces& places) {
    return places.providerDomain.within(QStringLiteral("/legalnotices")).containsInEitherScheme(page.source);
}

bool isOptionsPage(const PageRequest& page, const WebPlaces&) {
    return isPageAddress(page.source) && endsIn(page.source, QLatin1String("/options/"));
}

bool isExport(const PageRequest& page, const WebPlaces& places) { return isExportLink(page.request, places); }

// A tab that was opened for a print view shows it; any other opens one.
bool isPrintViewElsewhere(const PageRequest& page, const WebPlaces& places) {
    return places.viewer.contains(page.request) && hasPiece(page.request, QLatin1String("?print=true")) &&
           page.tabTitle != QLatin1String(printTabTitle);
}

bool isExportWithoutForm(const PageRequest& page, const WebPlaces& places) {
    return places.docs.contains(page.source) && endsIn(page.source, QLatin1String("/export"));
}

bool isAnything(const PageRequest&, const WebPlaces&) { return true; }

using enum PageVerdict;

constexpr NavigationRule rules[] = {
    {"nothing is known of the source", sourceIsUnknown, use},
    {"leaving the service", asksToLeaveTheService, logOut},
    {"maps", isMap, use},
    {"any sign-out", isAnySignOut, logOut},
    {"sharing with a social network", isShareTarget, openOutside},
    {"adding an account", addsAnAccount, openOutside},
    {"the social network's notifications", isFrameOfNotifications, use},
    {"the social network", isSocialNetwork, openOutside},
    {"storage, and the offer of the Drive application", isStoragePage, openOutside},
    {"frames of the search site", isFrameOfSearchSite, use},
    {"the search site", isSearchSite, openOutside},
    {"external sites", isExternalSite, openOutside},
    {"legal notices", isLegalNotice, openOutside},
    {"options of any site", isOptionsPage, openOutside},
    // Everything else is the Drive's and Docs' web application.
    {"export", isExport, download},
    {"print view", isPrintViewElsewhere, use, printTabTitle},
    {"export without a form", isExportWithoutForm, undecided},
    {"everything else", isAnything, use},
};

} // namespace

std::span<const NavigationRule> navigationRules() { return rules; }

bool isStoragePage(const QUrl& url, const WebPlaces& places) {
    return std::any_of(places.storagePages.begin(), places.storagePages.end(),
                       [&url](const WebPlace& page) { return page.isAt(url); });
}

} // namespace quenby
