// The page that shows one file: a picture or the beginning of a text as it is, others by what is known of them.
#pragma once

#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageFrame.h"

namespace quenby::localdrive {

// Threads: any.
class FilePage {
public:
    FilePage(DriveStore& store, const PageFrame& frame)
        : store_(store)
        , frame_(frame) {}

    void addRoutes(HttpServer& server);

private:
    Result<QString> page(const QString& fileId, Work& work, PageTemplates::Values& values) const;
    QString preview(const FileRecord& file) const;
    QString location(const FileRecord& file, Work& work) const;

    DriveStore& store_;
    const PageFrame& frame_;
};

} // namespace quenby::localdrive
