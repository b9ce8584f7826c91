#include "platform/linux/screencapture/WindowList.h"

#include <QMargins>

#include <algorithm>
#include <vector>

namespace quenby {
namespace {

constexpr uint32_t mostWindows = 4096; // of a property; more are not looked at

struct Atoms {
    explicit Atoms(const XDisplay& display)
        : clientList(display.atom("_NET_CLIENT_LIST_STACKING"))
        , frameExtents(display.atom("_NET_FRAME_EXTENTS"))
        , shadowExtents(display.atom("_GTK_FRAME_EXTENTS"))
        , windowType(display.atom("_NET_WM_WINDOW_TYPE"))
        , desktopType(display.atom("_NET_WM_WINDOW_TYPE_DESKTOP"))
        , state(display.atom("_NET_WM_STATE"))
        , hidden(display.atom("_NET_WM_STATE_HIDDEN")) {}

    xcb_atom_t clientList, frameExtents, shadowExtents, windowType, desktopType, state, hidden;
};

xcb_get_property_cookie_t askProperty(const XDisplay& display, xcb_window_t window, xcb_atom_t property) {
    return xcb_get_property(display.connection, false, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, mostWindows);
}

QList<uint32_t> answeredProperty(const XDisplay& display, xcb_get_property_cookie_t cookie) {
    const CAllocated<xcb_get_property_reply_t> reply(xcb_get_property_reply(display.connection, cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto* values = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

// Left, right, top, bottom, as both properties have them.
QMargins margins(const QList<uint32_t>& values) {
    constexpr uint32_t largest = 1000; // pixels; whoever says more is wrong
    if (values.size() < 4 || std::any_of(values.cbegin(), values.cend(), [](uint32_t each) { return each > largest; }))
        return {};
    const auto value = [&values](int index) { return static_cast<int>(values.at(index)); };
    return {value(0), value(2), value(1), value(3)};
}

// What is asked about one window; the questions about all of them go out together.
class WindowQuestion {
public:
    WindowQuestion(const XDisplay& display, const Atoms& atoms, xcb_window_t window)
        : display_(display)
        , atoms_(atoms)
        , attributes_(xcb_get_window_attributes(display.connection, window))
        , geometry_(xcb_get_geometry(display.connection, window))
        , place_(xcb_translate_coordinates(display.connection, window, display.screen->root, 0, 0))
        , frame_(askProperty(display, window, atoms.frameExtents))
        , shadow_(askProperty(display, window, atoms.shadowExtents))
        , type_(askProperty(display, window, atoms.windowType))
        , state_(askProperty(display, window, atoms.state)) {}

    struct Answer {
        QRect frame; // empty when the window cannot be seen
        bool isUnmanaged = false;
    };
    // Once.
    Answer answer() const {
        const CAllocated<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(display_.connection, attributes_, nullptr));
        const CAllocated<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(display_.connection, geometry_, nullptr));
        const CAllocated<xcb_translate_coordinates_reply_t> place(
            xcb_translate_coordinates_reply(display_.connection, place_, nullptr));
        const QMargins frame = margins(answeredProperty(display_, frame_));
        const QMargins shadow = margins(answeredProperty(display_, shadow_));
        const bool isDesktop = answeredProperty(display_, type_).contains(atoms_.desktopType);
        const bool isHidden = answeredProperty(display_, state_).contains(atoms_.hidden);
        if (!attributes || !geometry || !place || isDesktop || isHidden ||
            attributes->map_state != XCB_MAP_STATE_VIEWABLE || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
            return {};
        const int border = geometry->border_width;
        const QRect contents(place->dst_x, place->dst_y, geometry->width, geometry->height);
        const QRect whole = contents.marginsAdded(QMargins(border, border, border, border));
        return {whole.marginsAdded(frame).marginsRemoved(shadow), attributes->override_redirect != 0};
    }

private:
    const XDisplay& display_;
    const Atoms& atoms_;
    xcb_get_window_attributes_cookie_t attributes_;
    xcb_get_geometry_cookie_t geometry_;
    xcb_translate_coordinates_cookie_t place_;
    xcb_get_property_cookie_t frame_, shadow_, type_, state_;
};

QList<WindowQuestion::Answer> askAbout(const XDisplay& display, const Atoms& atoms, const QList<uint32_t>& windows) {
    std::vector<WindowQuestion> questions;
    questions.reserve(static_cast<size_t>(windows.size()));
    for (const uint32_t window : windows)
        questions.emplace_back(display, atoms, window);
    QList<WindowQuestion::Answer> answers;
    for (const WindowQuestion& question : questions)
        answers.append(question.answer());
    return answers;
}

QList<uint32_t> rootChildren(const XDisplay& display) {
    const CAllocated<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(display.connection, xcb_query_tree(display.connection, display.screen->root), nullptr));
    if (!tree)
        return {};
    const xcb_window_t* const first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

} // namespace

QList<QRect> readWindows(const XDisplay& display, const QList<CaptureScreen>& screens) {
    const Atoms atoms(display);
    const QList<uint32_t> clients =
        answeredProperty(display, askProperty(display, display.screen->root, atoms.clientList));
    QList<QRect> bottomUp;
    const auto add = [&](const QRect& frame) {
        const QRect seen = frame & display.desktop();
        constexpr int leastSize = 4; // pixels: smaller ones are there for other purposes
        if (seen.width() >= leastSize && seen.height() >= leastSize)
            bottomUp.append(seen);
    };
    for (const auto& client : askAbout(display, atoms, clients))
        add(client.frame);
    // A menu or a tool tip lies above all windows. One that covers a whole screen is somebody's overlay.
    const auto isOverlay = [&screens](const QRect& frame) {
        return std::any_of(screens.cbegin(), screens.cend(),
                           [&](const CaptureScreen& screen) { return frame.contains(screen.pixels); });
    };
    // Without a window manager all that there is hangs on the root window.
    for (const auto& child : askAbout(display, atoms, rootChildren(display)))
        if (clients.isEmpty() || (child.isUnmanaged && !isOverlay(child.frame)))
            add(child.frame);
    std::reverse(bottomUp.begin(), bottomUp.end());
    return bottomUp;
}

} // namespace quenby
