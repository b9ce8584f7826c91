#include "driveapi/GTLBatchQuery.h"

#include <QStringList>

namespace quenby {

std::shared_ptr<GTLBatchQuery> GTLBatchQuery::batchQueryWithQueries(std::vector<std::shared_ptr<GTLQuery>> queries) {
    auto batch = batchQuery();
    batch->setQueries(std::move(queries));
    return batch;
}

void GTLBatchQuery::setQueries(std::vector<std::shared_ptr<GTLQuery>> queries) {
    queries_ = std::move(queries);
    std::erase(queries_, nullptr);
    requestIDMap_.reset();
}

void GTLBatchQuery::addQuery(std::shared_ptr<GTLQuery> query) {
    if (!query)
        return;
    queries_.push_back(std::move(query));
    requestIDMap_.reset();
}

std::shared_ptr<GTLQuery> GTLBatchQuery::queryForRequestID(const QString& requestID) const {
    if (!requestIDMap_) {
        requestIDMap_.emplace();
        for (const auto& query : queries_)
            requestIDMap_->insert(query->requestID(), query);
    }
    return requestIDMap_->value(requestID);
}

QStringList GTLBatchQuery::distinctMethodNames() const {
    QStringList names;
    for (const auto& query : queries_)
        names.append(query->methodName());
    names.removeDuplicates();
    return names;
}

std::shared_ptr<GTLBatchQuery> GTLBatchQuery::sibling() const {
    auto sibling = batchQuery();
    sibling->copySettingsFrom(*this);
    return sibling;
}

std::shared_ptr<GTLBatchQuery> GTLBatchQuery::copy() const {
    auto copy = sibling();
    for (const auto& query : queries_)
        copy->addQuery(query->copy());
    return copy;
}

void GTLBatchQuery::executionDidStop() {
    GTLQueryProtocol::executionDidStop();
    for (const auto& query : queries_)
        query->executionDidStop();
}

QString GTLBatchQuery::description() const {
    return QStringLiteral("GTLBatchQuery %1 (queries:%2 methods:%3)")
        .arg(QStringLiteral("0x%1").arg(reinterpret_cast<quintptr>(this), 0, 16), QString::number(queries_.size()),
             distinctMethodNames().join(QLatin1Char(',')));
}

} // namespace quenby
