// A call's parameters, checked once, so that the methods read them without a thought for errors.
#pragma once

#include "core/Error.h"
#include "localdrive/store/IncomingBlob.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace quenby::localdrive {

class Parameters {
public:
    explicit Parameters(QJsonObject params, std::optional<StagedBlob> media = std::nullopt, QString mediaType = {})
        : params_(std::move(params))
        , media_(std::move(media))
        , mediaType_(std::move(mediaType)) {}

    // The first required parameter that is missing, or any known one whose value has the wrong type. Booleans and
    // integers may come as such or as strings.
    MaybeError check(const QStringList& required) const;

    // Empty when absent.
    QString text(const char* name) const;
    bool flag(const char* name, bool fallback) const;
    std::optional<qint64> number(const char* name) const;
    bool has(const char* name) const { return params_.contains(QLatin1String(name)); }
    // The resource that the call brings; empty when absent.
    QJsonObject resource() const { return params_.value(QLatin1String("resource")).toObject(); }

    const std::optional<StagedBlob>& media() const { return media_; }
    const QString& mediaType() const { return mediaType_; }

private:
    QJsonObject params_;
    std::optional<StagedBlob> media_;
    QString mediaType_;
};

} // namespace quenby::localdrive
