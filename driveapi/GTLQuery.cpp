#include "driveapi/GTLQuery.h"

#include <QStringList>

#include <atomic>

namespace quenby {
namespace {

QString part(const char* format, const QString& content) {
    return content.isEmpty() ? QString() : QString::fromLatin1(format).arg(content);
}

} // namespace

const GTLClass& GTLQuery::classDescriptor() { return gtlDefineClass<GTLQuery, void>("GTLQuery"); }

GTLQuery::GTLQuery(const QString& methodName)
    : methodName_(methodName)
    , requestID_(nextRequestID()) {}

std::shared_ptr<GTLQuery> GTLQuery::queryWithMethodName(const QString& methodName) {
    if (methodName.isEmpty())
        return nullptr;
    return std::shared_ptr<GTLQuery>(new GTLQuery(methodName));
}

QString GTLQuery::nextRequestID() {
    static std::atomic<quint64> counter{0};
    return QStringLiteral("gtl_%1").arg(++counter);
}

std::shared_ptr<GTLQuery> GTLQuery::makeSibling() const { return std::shared_ptr<GTLQuery>(new GTLQuery(methodName_)); }

std::shared_ptr<GTLQuery> GTLQuery::copy() const {
    const auto copy = makeSibling();
    if (hasJSON())
        copy->setJSON(JSON()->deepCopy());
    copy->copySettingsFrom(*this);
    copy->requestID_ = requestID_;
    copy->bodyObject_ = bodyObject_;
    copy->uploadParameters_ = uploadParameters_;
    copy->expectedObjectClass_ = expectedObjectClass_;
    copy->completionBlock_ = completionBlock_;
    return copy;
}

void GTLQuery::executionDidStop() {
    GTLQueryProtocol::executionDidStop();
    completionBlock_ = nullptr;
}

QString GTLQuery::description() const {
    QStringList parameters = hasJSON() ? JSON()->keys() : QStringList();
    parameters.sort();
    const QStringList urlParameters = urlQueryParameters().keys();
    return QStringLiteral("%1 %2: {method:%3%4%5%6%7}")
        .arg(objectClass().nameString(), QStringLiteral("0x%1").arg(reinterpret_cast<quintptr>(this), 0, 16),
             methodName_, part(" params:(%1)", parameters.join(QLatin1Char(','))),
             part(" bodyObject:%1", bodyObject_ ? bodyObject_->objectClass().nameString() : QString()),
             part(" urlQParams:(%1)", urlParameters.join(QLatin1Char(','))),
             part(" %1", uploadParameters_ ? uploadParameters_->description() : QString()));
}

} // namespace quenby
