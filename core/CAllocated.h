// What a C library hands over to be released with free().
#pragma once

#include <cstdlib>
#include <memory>

namespace quenby {

struct FreedByC {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Value>
using CAllocated = std::unique_ptr<Value, FreedByC>;

} // namespace quenby
