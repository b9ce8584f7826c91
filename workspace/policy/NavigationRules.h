// The rules that decide about a page, in the order in which they are asked.
#pragma once

#include "workspace/policy/NavigationPolicy.h"

#include <span>

namespace quenby {

struct NavigationRule {
    const char* name;
    bool (*matches)(const PageRequest& page, const WebPlaces& places);
    PageVerdict verdict;
    const char* newTabTitle = nullptr; // of a new tab for the request's address; null: none is opened
};

// The first that matches decides. The last one always does.
std::span<const NavigationRule> navigationRules();

// The page of the account's storage, or one that offers the Drive application; whatever its query.
bool isStoragePage(const QUrl& url, const WebPlaces& places);

} // namespace quenby
