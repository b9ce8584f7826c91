// quenby-screencapture as a process, as its caller sees it.
#pragma once

#include "platform/linux/x11/XDisplay.h"
#include "tests/platform/desktop/VirtualDesktop.h"

#include <QProcess>
#include <QTest>

#include <algorithm>

namespace quenby::testing {

class CaptureProgram {
public:
    static constexpr int patience = 30'000; // milliseconds

    // Words for its environment have the form NAME=VALUE; a name alone is taken out.
    explicit CaptureProgram(const QStringList& arguments, const QStringList& environment = {},
                            const QString& folder = {}) {
        auto variables = QProcessEnvironment::systemEnvironment();
        for (const QString& word : environment) {
            const qsizetype at = word.indexOf(QLatin1Char('='));
            if (at < 0)
                variables.remove(word);
            else
                variables.insert(word.first(at), word.mid(at + 1));
        }
        process_.setProcessEnvironment(variables);
        process_.setWorkingDirectory(folder);
        process_.start(QStringLiteral(QUENBY_SCREENCAPTURE_PROGRAM), arguments);
    }
    ~CaptureProgram() {
        process_.kill();
        process_.waitForFinished();
    }

    // Whether its overlay is on the screen; or there at all: it is made before the pointer is taken.
    static bool isOpen(bool isExistenceEnough = false) {
        const auto display = XDisplay::ofApplication();
        const CAllocated<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
            display->connection, xcb_query_tree(display->connection, display->screen->root), nullptr));
        const xcb_window_t* const children = xcb_query_tree_children(tree.get());
        return std::any_of(children, children + xcb_query_tree_children_length(tree.get()), [&](xcb_window_t window) {
            const auto askedName = xcb_get_property(display->connection, false, window, XCB_ATOM_WM_NAME,
                                                    XCB_GET_PROPERTY_TYPE_ANY, 0, 16);
            const auto askedState = xcb_get_window_attributes(display->connection, window);
            const CAllocated<xcb_get_property_reply_t> name(
                xcb_get_property_reply(display->connection, askedName, nullptr));
            const CAllocated<xcb_get_window_attributes_reply_t> state(
                xcb_get_window_attributes_reply(display->connection, askedState, nullptr));
            return name && state &&
                   QByteArray(static_cast<const char*>(xcb_get_property_value(name.get())),
                              xcb_get_property_value_length(name.get())) == "Choose a part of the screen" &&
                   (isExistenceEnough || state->map_state == XCB_MAP_STATE_VIEWABLE);
        });
    }
    bool waitUntilOpen() {
        return QTest::qWaitFor([this] { return isOpen() || !isRunning(); }, patience) && isRunning();
    }
    // Its exit code; -1: it crashed or does not end.
    int waitForEnd() {
        if (!QTest::qWaitFor([this] { return !isRunning(); }, patience))
            return -1;
        return process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
    }
    bool isRunning() const { return process_.state() != QProcess::NotRunning; }
    void terminate() { process_.terminate(); }
    QByteArray words() { return process_.readAllStandardError(); }

private:
    QProcess process_;
};

} // namespace quenby::testing
