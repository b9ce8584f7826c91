// What all pages of the web application have around them: who is signed in, the navigation and the storage gauge.
#pragma once

#include "localdrive/server/web/FileBrowser.h"
#include "localdrive/server/web/PageGuard.h"
#include "localdrive/server/web/PageTemplates.h"

#include <functional>

namespace quenby::localdrive {

// Threads: any.
class PageFrame {
public:
    // Fills the page in with what it finds; the values are those of the frame, to which it adds its own. An error
    // becomes a page that says so.
    using Show = std::function<Result<QString>(Work& work, PageTemplates::Values& values)>;

    PageFrame(DriveStore& store, const PageTemplates& pages, const PageGuard& guard)
        : store_(store)
        , pages_(pages)
        , guard_(guard) {}

    const PageTemplates& pages() const { return pages_; }

    // Answers with a page for whoever is signed in. `current` is the entry of the navigation that the page belongs to:
    // "home", "shared", "recent", "trash", "storage", or none.
    void answer(const QString& current, const Show& show, const httplib::Request& request,
                httplib::Response& response) const;
    // A page with a few words and a way back to the files.
    void showMessage(int status, const QString& heading, const QString& text, httplib::Response& response) const;

private:
    PageTemplates::Values values(Work& work, const QString& current, const httplib::Request& request) const;

    DriveStore& store_;
    const PageTemplates& pages_;
    const PageGuard& guard_;
};

} // namespace quenby::localdrive
