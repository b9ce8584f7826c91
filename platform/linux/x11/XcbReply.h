// What the X server answers, owned.
#pragma once

#include <cstdlib>
#include <memory>

namespace quenby {

struct XcbReplyFreed {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, XcbReplyFreed>;

} // namespace quenby
