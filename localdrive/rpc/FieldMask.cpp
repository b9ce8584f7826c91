#include "localdrive/rpc/FieldMask.h"

#include "localdrive/store/ApiError.h"

#include <QJsonArray>

namespace quenby::localdrive {

// list := path ("," path)*;  path := name ("/" path | "(" list ")")?
class FieldMaskParser {
public:
    explicit FieldMaskParser(const QString& text)
        : text_(text) {}

    bool parse(FieldMask& mask) { return parseList(mask, 0) && at_ == text_.size(); }

private:
    static constexpr int deepest = 20;

    bool take(char c) {
        if (at_ == text_.size() || text_[at_] != QLatin1Char(c))
            return false;
        ++at_;
        return true;
    }

    bool parseList(FieldMask& mask, int depth) {
        do {
            if (!parsePath(mask, depth))
                return false;
        } while (take(','));
        return true;
    }

    bool parsePath(FieldMask& mask, int depth) {
        const qsizetype start = at_;
        while (at_ < text_.size() && (text_[at_].isLetterOrNumber() || QStringLiteral("*-_#@$").contains(text_[at_])))
            ++at_;
        if (at_ == start || depth > deepest)
            return false;
        const QString name = text_.sliced(start, at_ - start);
        const bool isNew = !mask.fields_.contains(name);
        FieldMask& inner = mask.fields_[name];
        if (text_.mid(at_, 1) != QLatin1String("/") && text_.mid(at_, 1) != QLatin1String("(")) {
            inner.fields_.clear(); // the whole field
            return true;
        }
        // A field that was named as a whole before stays whole.
        FieldMask whole;
        FieldMask& target = isNew || !inner.fields_.empty() ? inner : whole;
        if (take('/'))
            return parsePath(target, depth + 1);
        return take('(') && parseList(target, depth + 1) && take(')');
    }

    const QString text_;
    qsizetype at_ = 0;
};

Result<FieldMask> FieldMask::parse(const QString& fields) {
    FieldMask mask;
    QString text = fields;
    text.remove(QLatin1Char(' '));
    if (!text.isEmpty() && !FieldMaskParser(text).parse(mask))
        return apiError::invalid(QStringLiteral("fields"), QStringLiteral("Invalid field selection: %1").arg(fields));
    return mask;
}

const FieldMask* FieldMask::find(const QString& key) const {
    auto found = fields_.find(key);
    if (found == fields_.end())
        found = fields_.find(QStringLiteral("*"));
    return found == fields_.end() ? nullptr : &found->second;
}

QJsonObject FieldMask::apply(const QJsonObject& object) const {
    if (fields_.empty())
        return object;
    QJsonObject kept;
    for (auto item = object.begin(); item != object.end(); ++item)
        if (const FieldMask* inner = find(item.key()))
            kept.insert(item.key(), inner->applyTo(item.value()));
    return kept;
}

QJsonValue FieldMask::applyTo(const QJsonValue& value) const {
    if (value.isObject())
        return apply(value.toObject());
    if (!value.isArray() || fields_.empty())
        return value;
    QJsonArray kept;
    for (const QJsonValue element : value.toArray())
        kept.append(applyTo(element));
    return kept;
}

} // namespace quenby::localdrive
