// A check box that is a setting: shows it, follows it, and writes it at once.
//
// Threads: the main thread. The settings outlive it.
#pragma once

#include <QCheckBox>

#include <functional>

namespace quenby {

class Defaults;

class SettingCheckBox final : public QCheckBox {
    Q_OBJECT

public:
    // What a key stands for that holds no boolean: `absent`.
    SettingCheckBox(const QString& text, Defaults& defaults, QString key, bool absent, QWidget* parent);

    // For a setting that somebody else writes; it may end up with another value than the box was given.
    void setWriter(std::function<void(bool isOn)> write) { write_ = std::move(write); }
    // Shows the setting as it is.
    void refresh();

private:
    bool isSet() const;

    Defaults& defaults_;
    const QString key_;
    const bool absent_;
    std::function<void(bool)> write_;
};

} // namespace quenby
