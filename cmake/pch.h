// What nearly every source file of the project includes, compiled once per library.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <QVector>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>
