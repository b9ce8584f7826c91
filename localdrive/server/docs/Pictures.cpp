#include "localdrive/server/docs/Pictures.h"

#include "localdrive/server/docs/Markup.h"
#include "localdrive/server/docs/SlideLayout.h"
#include "localdrive/server/docs/TextExports.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QSemaphore>
#include <QTextDocument>
#include <QThreadPool>

#include <algorithm>
#include <functional>

namespace quenby::localdrive {
namespace {

constexpr int stripe = 10; // pixels, of colour at the left edge
const QColor stripeColour(0x2a, 0x5f, 0xbd);
const QColor ink(0x1d, 0x25, 0x30);

constexpr int gap = 12; // between slides
const QColor gapColour(0xd5, 0xda, 0xe1);

constexpr int mostPictureHeight = 30000; // what the format can do is twice as much
constexpr double dotsPerInch = 96;

QList<SlideLayout> layoutsOf(const NativeContent& content) {
    QList<SlideLayout> layouts;
    for (const Section& section : content.sections)
        layouts.append(layoutOf(section));
    if (layouts.isEmpty())
        layouts.append(SlideLayout());
    return layouts;
}

int heightOf(const QList<SlideLayout>& layouts) {
    int height = -gap;
    for (const SlideLayout& layout : layouts)
        height += layout.height + gap;
    return height;
}

void paint(QPainter& painter, const SlideLayout& layout) {
    painter.fillRect(0, 0, SlideLayout::width, layout.height, Qt::white);
    painter.fillRect(0, 0, stripe, layout.height, stripeColour);
    painter.setPen(ink);
    for (const SlideLine& line : layout.lines) {
        painter.setFont(slideFont(line));
        painter.drawText(line.x, line.y, line.text);
    }
}

QByteArray number(int value) { return QByteArray::number(value); }

QByteArray rectangle(int y, int width, int height, const QColor& colour) {
    return "<rect y=\"" + number(y) + "\" width=\"" + number(width) + "\" height=\"" + number(height) + "\" fill=\"" +
           colour.name().toLatin1() + "\"/>\n";
}

QByteArray svgLine(const SlideLine& line, int top) {
    return "<text x=\"" + number(line.x) + "\" y=\"" + number(top + line.y) + "\" font-size=\"" +
           number(line.fontSize) + '"' + (line.isTitle ? " font-weight=\"bold\">" : ">") + escaped(line.text) +
           "</text>\n";
}

QByteArray drawPicture(const NativeContent& content, const char* format) {
    const QList<SlideLayout> layouts = layoutsOf(content);
    const int height = heightOf(layouts);
    const double scale = std::min(1.0, double{mostPictureHeight} / height);
    QImage image(static_cast<int>(SlideLayout::width * scale), static_cast<int>(height * scale), QImage::Format_RGB32);
    if (image.isNull())
        return {};
    image.fill(gapColour);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    for (const SlideLayout& layout : layouts) {
        paint(painter, layout);
        painter.translate(0, layout.height + gap);
    }
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    constexpr int quality = 90;
    image.save(&buffer, format, qstrcmp(format, "jpeg") == 0 ? quality : -1);
    return bytes;
}

QByteArray drawSvg(const NativeContent& content) {
    const QList<SlideLayout> layouts = layoutsOf(content);
    const int height = heightOf(layouts);
    QByteArray shapes = rectangle(0, SlideLayout::width, height, gapColour);
    int top = 0;
    for (const SlideLayout& layout : layouts) {
        shapes += rectangle(top, SlideLayout::width, layout.height, Qt::white) +
                  rectangle(top, stripe, layout.height, stripeColour);
        for (const SlideLine& line : layout.lines)
            shapes += svgLine(line, top);
        top += layout.height + gap;
    }
    const QByteArray size = number(SlideLayout::width) + "\" height=\"" + number(height);
    return xmlHead + QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"") + size + "\" viewBox=\"0 0 " +
           number(SlideLayout::width) + ' ' + number(height) + "\" font-family=\"sans-serif\" fill=\"" +
           ink.name().toLatin1() + "\" xml:space=\"preserve\">\n" + shapes + "</svg>\n";
}

QByteArray drawSlidesPdf(const QString& title, const NativeContent& content) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setTitle(printable(title));
    writer.setResolution(static_cast<int>(dotsPerInch));
    const auto sizePage = [&writer](const SlideLayout& layout) {
        const QSizeF inches(SlideLayout::width / dotsPerInch, layout.height / dotsPerInch);
        writer.setPageSize(QPageSize(inches, QPageSize::Inch, {}, QPageSize::ExactMatch));
        writer.setPageMargins({});
    };
    const QList<SlideLayout> layouts = layoutsOf(content);
    sizePage(layouts.first());
    QPainter painter(&writer);
    for (const SlideLayout& layout : layouts) {
        if (&layout != &layouts.first()) {
            sizePage(layout);
            writer.newPage();
        }
        paint(painter, layout);
    }
    painter.end();
    return bytes;
}

QByteArray drawSheetsPdf(const QString& title, const NativeContent& content) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setTitle(printable(title));
    writer.setPageSize(QPageSize(QPageSize::A4));
    QTextDocument document;
    QFont font(QStringLiteral("sans-serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPointSize(11);
    document.setDefaultFont(font);
    document.setDefaultStyleSheet(QStringLiteral("p { margin: 0; white-space: pre-wrap; } "
                                                 "table { border-collapse: collapse; } "
                                                 "td { border: 1px solid #999; padding: 2px 6px; }"));
    document.setHtml(QString::fromUtf8(htmlBody(content)));
    document.print(&writer);
    return bytes;
}

// Fonts and letters are kept for each thread that draws, and connections have many threads: so one of its own draws
// for all. It lasts as long as the process.
QByteArray onDrawingThread(const std::function<QByteArray()>& draw) {
    static QThreadPool* const pool = [] {
        auto* made = new QThreadPool;
        made->setMaxThreadCount(1);
        made->setExpiryTimeout(-1);
        return made;
    }();
    QByteArray drawn;
    QSemaphore done;
    pool->start([&] {
        drawn = draw();
        done.release();
    });
    done.acquire();
    return drawn;
}

} // namespace

QByteArray picture(const NativeContent& content, const char* format) {
    return onDrawingThread([&] { return drawPicture(content, format); });
}

QByteArray svg(const NativeContent& content) {
    return onDrawingThread([&] { return drawSvg(content); });
}

QByteArray slidesPdf(const QString& title, const NativeContent& content) {
    return onDrawingThread([&] { return drawSlidesPdf(title, content); });
}

QByteArray sheetsPdf(const QString& title, const NativeContent& content) {
    return onDrawingThread([&] { return drawSheetsPdf(title, content); });
}

} // namespace quenby::localdrive
