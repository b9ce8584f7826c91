// The header fields of one message: ordered, names compared without regard to case (RFC 9110, section 5).
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <utility>
#include <vector>

namespace quenby {

class HeaderFields {
public:
    using Field = std::pair<QByteArray, QByteArray>;

    // The value; several fields of one name are joined by ", " (Set-Cookie must be read with values()). Null when
    // there is none.
    QByteArray value(QByteArrayView name) const;
    QList<QByteArray> values(QByteArrayView name) const;
    bool contains(QByteArrayView name) const;

    // Line breaks and NUL inside a value are dropped, so that no value can begin another field.
    void set(const QByteArray& name, const QByteArray& value); // replaces every field of that name
    void append(const QByteArray& name, const QByteArray& value);
    void remove(QByteArrayView name);
    void clear() { fields_.clear(); }

    bool isEmpty() const { return fields_.empty(); }
    qsizetype size() const { return static_cast<qsizetype>(fields_.size()); }
    auto begin() const { return fields_.begin(); }
    auto end() const { return fields_.end(); }

    friend bool operator==(const HeaderFields&, const HeaderFields&) = default;

private:
    std::vector<Field> fields_;
};

} // namespace quenby
