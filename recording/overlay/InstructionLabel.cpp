#include "recording/overlay/InstructionLabel.h"

#include <QFontMetrics>
#include <QPainter>

namespace quenby {
namespace {

constexpr QSize standardSize{720, 72};
constexpr int largestText = 27;
constexpr int smallestText = 14; // below, lines are broken instead
constexpr int distanceFromEdge = 12;
constexpr QMargins padding{16, 3, 16, 3};
constexpr qreal cornerRadius = 10;
// From the lower edge of the overlay to the label's middle: a little below the overlay's own.
constexpr qreal heightOfMiddle = 0.8 / 2;

const QColor ground = QColor::fromRgbF(0.1F, 0.1F, 0.1F, 0.5F);
const QColor lightGrey(211, 211, 211);

constexpr int layoutFlags = Qt::AlignCenter | Qt::TextWordWrap;

} // namespace

InstructionLabel::InstructionLabel(QWidget* parent)
    : QLabel(QStringLiteral("Click to record full screen. Drag to record part to screen.\n End recording by clicking "
                            "stop button in menu bar."),
             parent) {
    setObjectName(QStringLiteral("btnFullRecording"));
    setTextFormat(Qt::PlainText);
    setAttribute(Qt::WA_TransparentForMouseEvents); // a press on it is a press on the overlay
}

void InstructionLabel::placeOn(const QSize& overlay) {
    QSize size = standardSize;
    size.setWidth(std::max(1, std::min(size.width(), overlay.width() - 2 * distanceFromEdge)));
    const QSize room = size.shrunkBy(padding);
    QFont fitting = font();
    const auto textSize = [&](int pixelSize) {
        fitting.setPixelSize(pixelSize);
        return QFontMetrics(fitting).size(0, text());
    };
    int pixelSize = largestText;
    while (pixelSize > smallestText &&
           (textSize(pixelSize).width() > room.width() || textSize(pixelSize).height() > room.height()))
        --pixelSize;
    fitting.setPixelSize(pixelSize);
    setFont(fitting);
    const QRect broken =
        QFontMetrics(fitting).boundingRect(QRect(0, 0, room.width(), overlay.height()), layoutFlags, text());
    size.setHeight(std::max(size.height(), broken.size().grownBy(padding).height()));
    resize(size);
    move((overlay.width() - size.width()) / 2, qRound(overlay.height() * (1 - heightOfMiddle) - size.height() / 2.0));
}

void InstructionLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
    painter.setPen(lightGrey);
    painter.drawText(rect().marginsRemoved(padding), layoutFlags, text());
}

} // namespace quenby
