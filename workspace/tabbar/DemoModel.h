// What the tab bar shows of a tab: the identifier object of a tab's item.
//
// Threads: the main thread. Setters tell only what is new.
#pragma once

#include <QColor>
#include <QIcon>
#include <QObject>
#include <QString>
#include <QUrl>

namespace quenby {

class DemoModel final : public QObject {
    Q_OBJECT

public:
    explicit DemoModel(const QString& title, const QUrl& url, QObject* parent = nullptr);

    const QString& title() const { return title_; }
    void setTitle(const QString& title);
    const QIcon& icon() const { return icon_; }
    void setIcon(const QIcon& icon);
    const QIcon& largeImage() const { return largeImage_; }
    void setLargeImage(const QIcon& image);
    const QString& iconName() const { return iconName_; }
    void setIconName(const QString& name);
    // The icon, or else the desktop's of that name; null when there is neither.
    QIcon shownIcon() const;
    bool isProcessing() const { return isProcessing_; } // the page loads: the tab's spinner turns
    void setProcessing(bool isProcessing);
    qint64 objectCount() const { return objectCount_; }
    void setObjectCount(qint64 count);
    const QColor& objectCountColor() const { return objectCountColor_; }
    void setObjectCountColor(const QColor& color);
    bool showObjectCount() const { return showObjectCount_; }
    void setShowObjectCount(bool shows);
    bool isEdited() const { return isEdited_; }
    void setEdited(bool isEdited);
    bool hasCloseButton() const { return hasCloseButton_; }
    void setHasCloseButton(bool has);
    const QUrl& Taburl() const { return Taburl_; }
    void setTaburl(const QUrl& url);

Q_SIGNALS:
    void changed();

private:
    template <typename Value>
    void change(Value& value, const Value& to);

    QString title_;
    QIcon icon_;
    QIcon largeImage_;
    QString iconName_;
    bool isProcessing_ = false;
    qint64 objectCount_ = 0;
    QColor objectCountColor_;
    bool showObjectCount_ = false;
    bool isEdited_ = false;
    bool hasCloseButton_ = true;
    QUrl Taburl_;
};

} // namespace quenby
