// Which of the two ways of calling the Drive are open: JSON-RPC may be closed, REST never is.
#pragma once

#include <atomic>

namespace quenby::localdrive {

// Threads: any.
class Roads {
public:
    // While it is closed, /rpc and /upload/rpc answer as if nothing had ever been there. Uploads that were announced
    // before go on at their locations.
    bool isRpcOpen() const { return isRpcOpen_; }
    void openRpc(bool open) { isRpcOpen_ = open; }

private:
    std::atomic<bool> isRpcOpen_ = true;
};

} // namespace quenby::localdrive
