// A file descriptor that is closed at the end of its scope.
#pragma once

#include <utility>

#include <unistd.h>

namespace quenby {

class OwnedDescriptor {
public:
    OwnedDescriptor() = default;
    explicit OwnedDescriptor(int descriptor)
        : descriptor_(descriptor) {}
    OwnedDescriptor(OwnedDescriptor&& other) noexcept
        : descriptor_(other.release()) {}
    OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~OwnedDescriptor() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }

    int get() const { return descriptor_; }
    int release() { return std::exchange(descriptor_, -1); }
    explicit operator bool() const { return descriptor_ >= 0; }

private:
    int descriptor_ = -1;
};

} // namespace quenby
