// Several queries sent in one request. Their replies find them by request ID, in whatever order they come.
#pragma once

#include "driveapi/GTLQuery.h"

#include <QHash>

#include <optional>
#include <vector>

namespace quenby {

class GTLBatchQuery : public GTLQueryProtocol {
public:
    static std::shared_ptr<GTLBatchQuery> batchQuery() { return std::make_shared<GTLBatchQuery>(); }
    static std::shared_ptr<GTLBatchQuery> batchQueryWithQueries(std::vector<std::shared_ptr<GTLQuery>> queries);

    const std::vector<std::shared_ptr<GTLQuery>>& queries() const { return queries_; }
    void setQueries(std::vector<std::shared_ptr<GTLQuery>> queries);
    void addQuery(std::shared_ptr<GTLQuery> query); // null is not added
    // Null when no member has the request ID.
    std::shared_ptr<GTLQuery> queryForRequestID(const QString& requestID) const;

    // The members' method names, each once, in order.
    QStringList distinctMethodNames() const;

    // An empty batch with the same settings.
    std::shared_ptr<GTLBatchQuery> sibling() const;
    // Copies the members too.
    std::shared_ptr<GTLBatchQuery> copy() const;

    bool isBatchQuery() const override { return true; }
    void executionDidStop() override;
    QString description() const override;

private:
    std::vector<std::shared_ptr<GTLQuery>> queries_;
    mutable std::optional<QHash<QString, std::shared_ptr<GTLQuery>>> requestIDMap_;
};

} // namespace quenby
