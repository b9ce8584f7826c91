// Loaded into the portal's back-end: lets it hand out the screen of a compositor that has no graphics card.
//
// The back-end wants to hear, before it begins, in which format the compositor would share memory of the card, even
// where nobody asks for such memory afterwards. A compositor that draws by the processor does not say it; so it is said
// here, after each word about the format in plain memory. Nothing is shared that way.
#include <dlfcn.h>

#include <cstdint>
#include <cstring>

struct wl_proxy;
extern "C" const char* wl_proxy_get_class(wl_proxy* proxy);

namespace {

using AnyFunction = void (*)();

// What is told of a picture (zwlr_screencopy_frame_v1), in the protocol's order.
struct FrameListener {
    void (*buffer)(void* data, wl_proxy* frame, uint32_t format, uint32_t width, uint32_t height, uint32_t stride);
    AnyFunction flagsReadyFailedDamage[4];
    void (*cardBuffer)(void* data, wl_proxy* frame, uint32_t format, uint32_t width, uint32_t height);
    AnyFunction bufferDone;
};

constexpr uint32_t formatXR24 = 0x34325258;

const FrameListener* backEnds = nullptr;
FrameListener ours;

void tellBoth(void* data, wl_proxy* frame, uint32_t format, uint32_t width, uint32_t height, uint32_t stride) {
    backEnds->buffer(data, frame, format, width, height, stride);
    backEnds->cardBuffer(data, frame, formatXR24, width, height);
}

} // namespace

extern "C" int wl_proxy_add_listener(wl_proxy* proxy, AnyFunction* listener, void* data) {
    using AddListener = int (*)(wl_proxy*, AnyFunction*, void*);
    static const auto add = reinterpret_cast<AddListener>(dlsym(RTLD_NEXT, "wl_proxy_add_listener"));
    if (std::strcmp(wl_proxy_get_class(proxy), "zwlr_screencopy_frame_v1") == 0) {
        backEnds = reinterpret_cast<const FrameListener*>(listener);
        ours = *backEnds;
        ours.buffer = &tellBoth;
        listener = reinterpret_cast<AnyFunction*>(&ours);
    }
    return add(proxy, listener, data);
}
