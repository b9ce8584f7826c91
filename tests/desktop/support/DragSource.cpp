#include "tests/desktop/support/DragSource.h"

#include <QTest>

namespace quenby::testing {
namespace {

constexpr int side = 48; // of the source's window

} // namespace

DragSource::DragSource(const QList<QByteArray>& paths, const QPoint& place)
    : paths_(paths)
    , place_(place) {}

DragSource::~DragSource() {
    if (isPressed_)
        input_.release();
    process_.kill();
    process_.waitForFinished();
}

bool DragSource::begin() {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QStringLiteral(QUENBY_DRAG_SOURCE_PROGRAM),
                   {QString::number(place_.x()), QString::number(place_.y()), QString::number(side)});
    // As addresses, so that names that are no text arrive as they are.
    for (const QByteArray& path : paths_)
        process_.write("file://" + path.toPercentEncoding("/") + "\r\n");
    process_.closeWriteChannel();
    if (!waitForLine("shown"))
        return false;
    const QPoint middle = place_ + QPoint(side / 2, side / 2);
    input_.moveTo(middle);
    input_.press();
    isPressed_ = true;
    if (!waitForLine("pressed"))
        return false;
    // The second step is longer than what still counts as a click.
    input_.moveTo(middle + QPoint(4, -4));
    input_.moveTo(middle + QPoint(20, -20));
    return waitForLine("begun");
}

void DragSource::moveTo(const QPoint& position) {
    // Two steps: a target is entered, and then moved over.
    input_.moveTo(position - QPoint(2, 2));
    input_.moveTo(position);
}

bool DragSource::waitForAcceptance(bool isAccepted) {
    return QTest::qWaitFor(
        [this, isAccepted] {
            read();
            return isAccepted_ == isAccepted;
        },
        DesktopInput::patience);
}

std::optional<Qt::DropAction> DragSource::drop() {
    input_.release();
    isPressed_ = false;
    return waitForEnd();
}

std::optional<Qt::DropAction> DragSource::cancel() {
    input_.key(QStringLiteral("Escape"));
    const auto action = waitForEnd();
    input_.release();
    isPressed_ = false;
    return action;
}

bool DragSource::dropAt(const QPoint& position) {
    if (!begin())
        return false;
    moveTo(position);
    return waitForAcceptance() && drop().value_or(Qt::IgnoreAction) != Qt::IgnoreAction;
}

void DragSource::read() {
    while (process_.canReadLine()) {
        lines_.append(process_.readLine().trimmed());
        if (lines_.last().startsWith("action "))
            isAccepted_ = lines_.last() != "action 0";
    }
}

bool DragSource::waitForLine(const QByteArray& line) {
    const bool came = QTest::qWaitFor(
        [this, &line] {
            read();
            return lines_.contains(line);
        },
        DesktopInput::patience);
    if (!came)
        qWarning("The drag's source does not say \"%s\"", line.constData());
    return came;
}

std::optional<Qt::DropAction> DragSource::waitForEnd() {
    constexpr QByteArrayView ended("ended ");
    const bool came = QTest::qWaitFor(
        [this, ended] {
            read();
            return !lines_.isEmpty() && lines_.last().startsWith(ended);
        },
        DesktopInput::patience);
    if (!came)
        return std::nullopt;
    return Qt::DropAction(lines_.last().mid(ended.size()).toInt());
}

} // namespace quenby::testing
