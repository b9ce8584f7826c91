// One autostart entry (XDG Desktop Application Autostart Specification; Desktop Entry Specification 1.5) as text: read,
// changed and written without losing what people or desktops added to it.
//
// Pure. Threads: any.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace quenby {

class AutostartEntry {
public:
    // Of nothing, or of a file that is no entry: none of its lines are kept.
    explicit AutostartEntry(const QByteArray& text = {});

    // Not "Hidden", and not switched off by a desktop's own key ("X-GNOME-Autostart-enabled").
    bool isEnabled() const;
    void setEnabled(bool isEnabled);

    // Program and arguments of "Exec", unquoted, without field codes; empty when there are none or they can't be read.
    QStringList command() const;
    void setCommand(const QStringList& command);

    // Another key of the entry's group, exactly as it stands; absent: an empty one.
    QByteArray value(const QByteArray& key) const;
    void setValue(const QByteArray& key, const QByteArray& value);
    // The same as the text that it means.
    QString string(const QByteArray& key) const;
    void setString(const QByteArray& key, const QString& value);

    QByteArray text() const;

private:
    qsizetype endOfGroup() const;
    qsizetype lineOf(const QByteArray& key) const;

    QList<QByteArray> lines_; // without their ends; none, or the first that is no comment begins the entry's group
};

} // namespace quenby
