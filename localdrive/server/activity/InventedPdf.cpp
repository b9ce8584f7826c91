#include "localdrive/server/activity/InventedPdf.h"

#include <QList>

namespace quenby::localdrive {

QByteArray inventedPdf(const QString& line) {
    QByteArray text;
    for (const QChar character : line) {
        const bool isPlain = character >= QLatin1Char(' ') && character <= QLatin1Char('~');
        if (character == QLatin1Char('(') || character == QLatin1Char(')') || character == QLatin1Char('\\'))
            text += '\\';
        text += isPlain ? character.toLatin1() : '?';
    }
    const QByteArray drawing = "BT /F1 18 Tf 72 740 Td (" + text + ") Tj ET";
    const QList<QByteArray> objects{
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R "
        "/Resources << /Font << /F1 << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> >> >>",
        "<< /Length " + QByteArray::number(drawing.size()) + " >>\nstream\n" + drawing + "\nendstream",
    };
    QByteArray file = "%PDF-1.4\n";
    QByteArray table = "0000000000 65535 f \n";
    for (qsizetype i = 0; i < objects.size(); ++i) {
        table += QByteArray::number(file.size()).rightJustified(10, '0') + " 00000 n \n";
        file += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const QByteArray count = QByteArray::number(objects.size() + 1);
    const QByteArray start = QByteArray::number(file.size());
    return file + "xref\n0 " + count + '\n' + table + "trailer\n<< /Size " + count + " /Root 1 0 R >>\nstartxref\n" +
           start + "\n%%EOF\n";
}

} // namespace quenby::localdrive
