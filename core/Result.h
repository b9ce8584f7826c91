// A value or the error that stands in its place, for calls that answer at once.
#pragma once

#include "core/Error.h"

#include <QtGlobal>

#include <utility>
#include <variant>

namespace quenby {

template <typename T>
class [[nodiscard]] Result {
public:
    Result(T value)
        : outcome_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error)
        : outcome_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return outcome_.index() == 0; }
    explicit operator bool() const { return ok(); }

    // Only when ok().
    T& value() & { return Q_ASSERT(ok()), std::get<0>(outcome_); }
    const T& value() const& { return Q_ASSERT(ok()), std::get<0>(outcome_); }
    T&& value() && { return Q_ASSERT(ok()), std::get<0>(std::move(outcome_)); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }

    // Only when not ok().
    const Error& error() const { return Q_ASSERT(!ok()), std::get<1>(outcome_); }

    T valueOr(T fallback) const { return ok() ? std::get<0>(outcome_) : std::move(fallback); }

private:
    std::variant<T, Error> outcome_;
};

// For calls that yield nothing but can fail.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error)
        : error_(std::move(error)) {}

    bool ok() const { return !error_; }
    explicit operator bool() const { return ok(); }
    const Error& error() const { return Q_ASSERT(error_), *error_; }

private:
    MaybeError error_;
};

} // namespace quenby
