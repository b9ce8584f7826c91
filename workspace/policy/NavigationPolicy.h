// Which pages belong into a tab. Pure functions of addresses: nothing is loaded, opened or remembered here.
//
// Every host comes from Endpoints. Addresses are compared as they are understood (see WebPlace), so that one which only
// looks like the provider's is never taken for it. The rules themselves are in NavigationRules.
#pragma once

#include "core/Endpoints.h"
#include "core/PageOpenRecord.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace quenby {

enum class PageVerdict {
    use, // in the tab that asks
    ignore,
    download,
    openOutside, // the source address, in the default browser; the tab stays where it is
    logOut,      // signs the user out of Quenby; the tab stays where it is
    undecided,   // no decision: the tab stays where it is
};

struct PageDecision {
    PageVerdict verdict = PageVerdict::use;
    std::optional<PageOpenRecord> newTab = {}; // to be opened besides

    friend bool operator==(const PageDecision&, const PageDecision&) = default;
};

// What a tab wants to go to.
struct PageRequest {
    QUrl source;  // what was asked for first, before redirects; empty: not known
    QUrl request; // where it leads now
    bool isMainFrame = true;
    QString tabTitle = {};
};

// Before each navigation, redirects included; frames go by the same rules as the page. Addresses that no web server
// answers (files, scripts, mail and the like) are ignored before any rule; a frame may be filled by its page, and a
// page may show a blob of its own.
PageDecision decidePolicyForNavigationAction(const PageRequest& page, const Endpoints& endpoints);
// For links that want a window or tab of their own. `use` is in place; what is no page, or an empty one, is ignored.
PageDecision decidePolicyForNewWindowAction(const QUrl& request, const Endpoints& endpoints);
// For an answer that is about to be shown.
PageVerdict decidePolicyForMIMEType(const QUrl& request, const Endpoints& endpoints);
// For a script that opens a window. What may not stand in a tab becomes an empty page.
PageOpenRecord createWebViewWithRequest(const QUrl& request);

// Whether an address may stand in a tab at all: http or https with a host and without user information, or about:blank.
bool isPageAddress(const QUrl& url);
// Whether this is the page with which the service turns down the program's words about itself or the engine's age.
bool isRefusalOfBrowser(const QUrl& url, const Endpoints& endpoints);

} // namespace quenby
