// The pages with lists of files: My Drive and its folders, what was shared, what is recent, the trash and searches.
#pragma once

#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageFrame.h"

namespace quenby::localdrive {

// Threads: any.
class ListPages {
public:
    ListPages(DriveStore& store, const PageFrame& frame)
        : store_(store)
        , frame_(frame) {}

    void addRoutes(HttpServer& server);

private:
    void showFolder(const QString& folderId, const httplib::Request& request, httplib::Response& response) const;
    void show(Place place, const httplib::Request& request, httplib::Response& response) const;
    QString page(ListRequest list, Work& work, PageTemplates::Values values, const httplib::Request& request,
                 httplib::Response& response) const;
    QString breadcrumbs(Work& work, const QString& folderId) const;

    DriveStore& store_;
    const PageFrame& frame_;
};

} // namespace quenby::localdrive
