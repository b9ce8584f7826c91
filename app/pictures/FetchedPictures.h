// The change rows' pictures, fetched through the same fetchers as everything else: two downloads a record (its type
// icon and its thumbnail), decoded on another thread, and kept in the image cache folder as IDENTIFIER.png.
//
// Whatever comes from the network or lies in the cache may be hostile: it is limited in size and time, and what is no
// picture is ignored. Addresses may hold secrets and are never logged.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/Endpoints.h"
#include "popover/changes/RowPictures.h"

#include <chrono>
#include <memory>

namespace quenby {

class CacheFolders;
class GTMHTTPFetcherService;

class FetchedPictures final : public RowPictures {
    Q_OBJECT

public:
    // The fetcher service's authorizer is used for the Drive's own hosts alone (see endpoints), as it is at the time. A
    // service that nobody else uses keeps slow pictures from holding the places that the Drive's calls wait for.
    FetchedPictures(std::shared_ptr<GTMHTTPFetcherService> fetcherService, const Endpoints& endpoints,
                    CacheFolders& folders);
    ~FetchedPictures() override;

    // From memory, which holds the latest few dozen pictures.
    QImage picture(const ChangeRecord& record) const override;
    // Brings nothing for a record without an identifier, such as a sum of deletions. A deleted file's picture is never
    // taken from the folder.
    void want(const ChangeRecord& record) override;
    // Signed out: forgets what is in memory, gives up what is on its way. The files stay until the folder is emptied.
    void clear();

private:
    struct Private;
    const std::unique_ptr<Private> d_;
};

} // namespace quenby
