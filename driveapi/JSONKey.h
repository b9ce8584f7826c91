// The name of a dictionary's member as a function's parameter: UTF-8 as it stands, or a QString.
#pragma once

#include <QByteArray>
#include <QString>

#include <concepts>
#include <string_view>

namespace quenby {

class JSONKey {
public:
    template <std::convertible_to<std::string_view> Text>
    JSONKey(const Text& utf8)
        : view_(utf8) {}
    JSONKey(const QString& text)
        : converted_(text.toUtf8())
        , view_(converted_.constData(), static_cast<std::size_t>(converted_.size())) {}
    JSONKey(const JSONKey&) = delete;
    JSONKey& operator=(const JSONKey&) = delete;

    operator std::string_view() const { return view_; }

private:
    QByteArray converted_; // only of a QString
    std::string_view view_;
};

} // namespace quenby
