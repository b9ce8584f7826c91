// How full the account is, and of what: a bar with a piece for each service, and what the pieces stand for below it.
//
// Threads: the main thread.
#pragma once

#include "core/AccountUsage.h"

#include <QColor>
#include <QWidget>

#include <optional>

namespace quenby {

// "4.3 GB of 15 GB used"; without a limit "4.3 GB used"; says so when no room is left.
QString usageText(const AccountUsage& usage);

class ServiceUsageBar final : public QWidget {
    Q_OBJECT

public:
    // One piece of the bar. The smallest of many services share one.
    struct Piece {
        QString name;
        qint64 bytes = 0;
        bool isRest = false; // what no service of its own is shown for

        friend bool operator==(const Piece&, const Piece&) = default;
    };

    explicit ServiceUsageBar(QWidget* parent);

    // Absent: not known. Then it is empty and keeps its room.
    void setUsage(const std::optional<AccountUsage>& usage);
    const QList<Piece>& pieces() const { return pieces_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Caption {
        QRect place; // of the square and the text, as from left to right
        QString text;
    };

    QList<Caption> captionsFor(int width) const;
    void paintBar(QPainter& painter) const;
    void paintCaptions(QPainter& painter) const;
    QString inWords() const;

    std::optional<AccountUsage> usage_;
    QList<Piece> pieces_;
};

} // namespace quenby
