// A choice that is a setting: shows it, follows it, and writes it at once.
//
// Threads: the main thread. The settings outlive it.
#pragma once

#include <QComboBox>

namespace quenby {

class Defaults;

class SettingComboBox final : public QComboBox {
    Q_OBJECT

public:
    SettingComboBox(Defaults& defaults, QString key, QWidget* parent);

    // What a key stands for that is absent, or has none of the values; choosing it removes the key. Before the others.
    void addDefaultChoice(const QString& text) { addChoice(text, {}); }
    void addChoice(const QString& text, const QString& value);
    // Shows the setting as it is.
    void refresh();

protected:
    void wheelEvent(QWheelEvent* event) override;

private:
    int stored() const;
    void write(int index);

    Defaults& defaults_;
    const QString key_;
};

} // namespace quenby
