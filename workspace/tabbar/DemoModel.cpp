#include "workspace/tabbar/DemoModel.h"

namespace quenby {
namespace {

template <typename Value>
bool isSame(const Value& one, const Value& other) {
    return one == other;
}

bool isSame(const QIcon& one, const QIcon& other) { return one.cacheKey() == other.cacheKey(); }

} // namespace

DemoModel::DemoModel(const QString& title, const QUrl& url, QObject* parent)
    : QObject(parent)
    , title_(title)
    , Taburl_(url) {}

template <typename Value>
void DemoModel::change(Value& value, const Value& to) {
    if (isSame(value, to))
        return;
    value = to;
    Q_EMIT changed();
}

void DemoModel::setTitle(const QString& title) { change(title_, title); }
void DemoModel::setIcon(const QIcon& icon) { change(icon_, icon); }
void DemoModel::setLargeImage(const QIcon& image) { change(largeImage_, image); }
void DemoModel::setIconName(const QString& name) { change(iconName_, name); }
void DemoModel::setProcessing(bool isProcessing) { change(isProcessing_, isProcessing); }
void DemoModel::setObjectCount(qint64 count) { change(objectCount_, count); }
void DemoModel::setObjectCountColor(const QColor& color) { change(objectCountColor_, color); }
void DemoModel::setShowObjectCount(bool shows) { change(showObjectCount_, shows); }
void DemoModel::setEdited(bool isEdited) { change(isEdited_, isEdited); }
void DemoModel::setHasCloseButton(bool has) { change(hasCloseButton_, has); }
void DemoModel::setTaburl(const QUrl& url) { change(Taburl_, url); }

QIcon DemoModel::shownIcon() const {
    return icon_.isNull() && !iconName_.isEmpty() ? QIcon::fromTheme(iconName_) : icon_;
}

} // namespace quenby
