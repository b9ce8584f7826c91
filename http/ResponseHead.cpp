#include "http/ResponseHead.h"

namespace quenby {

ResponseHead::Progress ResponseHead::addLine(QByteArrayView line) {
    if (line.startsWith("HTTP/")) {
        const qsizetype space = line.indexOf(' ');
        statusCode_ =
            space < 0 ? 0 : line.sliced(space + 1).first(std::min(qsizetype(3), line.size() - space - 1)).toInt();
        headers_.clear();
        lastName_.clear();
        isOpen_ = true;
        return Progress::more;
    }
    if (!isOpen_)
        return Progress::more;
    const QByteArrayView text = line.trimmed();
    if (text.isEmpty()) {
        closeField();
        isOpen_ = false;
        return Progress::complete;
    }
    if (line.startsWith(' ') || line.startsWith('\t')) {
        lastValue_ += ' ' + text.toByteArray();
        return Progress::more;
    }
    closeField();
    const qsizetype colon = text.indexOf(':');
    if (colon > 0) {
        lastName_ = text.first(colon).trimmed().toByteArray();
        lastValue_ = text.sliced(colon + 1).trimmed().toByteArray();
    }
    return Progress::more;
}

void ResponseHead::closeField() {
    if (!lastName_.isEmpty())
        headers_.append(lastName_, lastValue_);
    lastName_.clear();
}

} // namespace quenby
