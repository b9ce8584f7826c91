// The pages about the account: how much room its files take, and the desktop application that it can be used with.
#pragma once

#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageFrame.h"

namespace quenby::localdrive {

// Threads: any.
class AccountPages {
public:
    explicit AccountPages(const PageFrame& frame)
        : frame_(frame) {}

    void addRoutes(HttpServer& server);

private:
    QString storage(Work& work, PageTemplates::Values& values) const;

    const PageFrame& frame_;
};

} // namespace quenby::localdrive
