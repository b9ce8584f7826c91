// A value that takes room only once it is written; until then it reads as one fresh from its constructor. For what
// few objects of many have, or have for a short time.
#pragma once

#include <memory>

namespace quenby {

template <typename T>
class Lazy {
public:
    const T& operator*() const { return value_ ? *value_ : unwritten(); }
    const T* operator->() const { return &**this; }
    // Makes the value where there is none.
    T& write() {
        if (!value_)
            value_ = std::make_unique<T>();
        return *value_;
    }
    void reset() { value_ = nullptr; }

private:
    static const T& unwritten() {
        static const T value;
        return value;
    }

    std::unique_ptr<T> value_;
};

} // namespace quenby
