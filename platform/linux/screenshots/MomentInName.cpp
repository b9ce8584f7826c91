#include "platform/linux/screenshots/MomentInName.h"

namespace quenby {
namespace {

using namespace std::chrono_literals;

// As the desktops' catalogues have it.
constexpr QStringView words[] = {
    u"Screenshot",
    u"Bildschirmfoto",
    u"Capture d’écran",
    u"Capture d'écran",
    u"Captura de pantalla",
    u"Captura de tela",
    u"Captura de ecrã",
    u"Schermata",
    u"Istantanea",
    u"Schermafdruk",
    u"Schermafbeelding",
    u"Zrzut ekranu",
    u"Снимок экрана",
    u"Знімок екрана",
    u"スクリーンショット",
    u"截图",
    u"屏幕截图",
    u"螢幕截圖",
    u"스크린샷",
    u"Skärmbild",
    u"Skärmdump",
    u"Skærmbillede",
    u"Skjermbilde",
    u"Kuvakaappaus",
    u"Snímek obrazovky",
    u"Snímka obrazovky",
    u"Képernyőkép",
    u"Ekran görüntüsü",
    u"Captură de ecran",
    u"Στιγμιότυπο",
};

struct Fields {
    int year = 0, month = 1, day = 1, hour = 0, minute = 0, second = 0;
    bool hasSeconds = false;
    std::optional<qint64> sinceEpoch;
};

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

std::optional<qint64> numberAt(QStringView text, qsizetype digits) {
    if (text.size() < digits)
        return {};
    qint64 number = 0;
    for (const QChar c : text.first(digits)) {
        if (!isDigit(c))
            return {};
        number = number * 10 + (c.unicode() - u'0');
    }
    return number;
}

qsizetype leadingDigits(QStringView text) {
    qsizetype count = 0;
    while (count < text.size() && isDigit(text.at(count)))
        ++count;
    return count;
}

bool standsBetweenWords(QChar c) { return QStringView(u" _-–—.,:'’").contains(c); }
bool isOfWords(QChar c) { return c.isLetter() || c.isMark() || c.isSurrogate() || standsBetweenWords(c); }

bool isAddedNumber(QStringView rest) {
    for (const QStringView separator : {u" - ", u"-", u"_"}) {
        const QStringView number = rest.startsWith(separator) ? rest.sliced(separator.size()) : QStringView();
        if (!number.isEmpty() && number.size() <= 3 && leadingDigits(number) == number.size())
            return true;
    }
    return false;
}

// Spaces of a word may be underscores in a name.
qsizetype lengthOfWordAt(QStringView text, QStringView word) {
    if (text.size() < word.size())
        return 0;
    const QString start = text.first(word.size()).toString().replace(u'_', u' ');
    return word.compare(start, Qt::CaseInsensitive) == 0 ? word.size() : 0;
}

int* fieldOf(Fields& fields, QChar place) {
    switch (place.unicode()) {
    case u'Y':
        return &fields.year;
    case u'm':
        return &fields.month;
    case u'd':
        return &fields.day;
    case u'H':
        return &fields.hour;
    case u'M':
        return &fields.minute;
    case u'S':
        return &fields.second;
    default:
        return nullptr;
    }
}

bool matches(QStringView text, QStringView form, Fields& fields);

bool matchesAnyWords(QStringView text, QStringView form, Fields& fields) {
    for (qsizetype length = 1; length <= text.size() && isOfWords(text.at(length - 1)); ++length) {
        if (matches(text.sliced(length), form, fields))
            return true;
    }
    return false;
}

bool matchesKnownWord(QStringView text, QStringView form, Fields& fields) {
    for (const QStringView word : words) {
        const qsizetype length = lengthOfWordAt(text, word);
        if (length > 0 && matches(text.sliced(length), form, fields))
            return true;
    }
    return false;
}

bool matchesOffset(QStringView text, QStringView form, Fields& fields) {
    if (text.isEmpty() || (text.front() != u'+' && text.front() != u'-') || !numberAt(text.sliced(1), 2))
        return false;
    QStringView rest = text.sliced(3);
    if (rest.startsWith(u':'))
        rest = rest.sliced(1);
    return numberAt(rest, 2) && matches(rest.sliced(2), form, fields);
}

bool matchesPlace(QChar place, QStringView text, QStringView form, Fields& fields) {
    constexpr qsizetype epochDigits = 10; // until the year 2286
    if (int* const field = fieldOf(fields, place)) {
        const qsizetype digits = place == u'Y' ? 4 : 2;
        const auto number = numberAt(text, digits);
        if (!number)
            return false;
        *field = static_cast<int>(*number);
        fields.hasSeconds = fields.hasSeconds || place == u'S';
        return matches(text.sliced(digits), form, fields);
    }
    switch (place.unicode()) {
    case u's':
        fields.sinceEpoch = numberAt(text, epochDigits);
        return fields.sinceEpoch && matches(text.sliced(epochDigits), form, fields);
    case u'n': {
        const qsizetype digits = leadingDigits(text);
        return digits > 0 && matches(text.sliced(digits), form, fields);
    }
    case u'z':
        return matchesOffset(text, form, fields);
    case u'w':
        return matchesKnownWord(text, form, fields);
    case u'a':
        return matchesAnyWords(text, form, fields);
    default:
        return false;
    }
}

bool matches(QStringView text, QStringView form, Fields& fields) {
    if (form.isEmpty())
        return text.isEmpty() || isAddedNumber(text);
    if (form.front() == u'%')
        return matchesPlace(form.at(1), text, form.sliced(2), fields);
    return !text.isEmpty() && text.first(1).compare(form.first(1), Qt::CaseInsensitive) == 0 &&
           matches(text.sliced(1), form.sliced(1), fields);
}

QDateTime asShownOnTheWall(const QDateTime& moment) {
    const QDateTime local = moment.toLocalTime();
    return QDateTime(local.date(), local.time(), Qt::UTC);
}

std::optional<NamedMoment> momentOf(const Fields& fields) {
    if (fields.sinceEpoch)
        return NamedMoment{asShownOnTheWall(QDateTime::fromSecsSinceEpoch(*fields.sinceEpoch)), 1s};
    const QDate date(fields.year, fields.month, fields.day);
    const QTime time(fields.hour, fields.minute, fields.second);
    if (!date.isValid() || !time.isValid())
        return {};
    return NamedMoment{QDateTime(date, time, Qt::UTC), fields.hasSeconds ? 1s : 60s};
}

} // namespace

// Both as clocks on the wall show them: so the hour that comes twice in autumn is no riddle.
std::chrono::milliseconds delaySince(const NamedMoment& named, const QDateTime& moment) {
    return std::chrono::milliseconds(named.begin.msecsTo(asShownOnTheWall(moment)));
}

std::optional<NamedMoment> momentInName(QStringView stem, QStringView forms) {
    constexpr qsizetype longestName = 255; // of a file
    if (stem.size() > longestName)
        return {};
    for (const QStringView form : forms.split(u'|')) {
        Fields fields;
        if (matches(stem, form, fields)) {
            if (const auto moment = momentOf(fields))
                return moment;
        }
    }
    return {};
}

} // namespace quenby
