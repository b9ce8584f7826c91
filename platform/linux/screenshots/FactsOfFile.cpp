#include "platform/linux/screenshots/FactsOfFile.h"

#include "platform/linux/screenshots/MomentInName.h"
#include "platform/linux/screenshots/ScreenshotTools.h"

#include <QFile>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// Tools write their file in one go. Who changes it later than this is somebody else.
constexpr auto longestWriting = 20s;
// File systems of cameras and old networks know every second second only, and round down.
constexpr auto roundedDown = 2s;
// A server that keeps the files has a clock of its own. Nobody copies a file before it is there, so this lets none in.
constexpr auto clockDifference = 60s;

// The time from its birth to its last change is that of writing it. Where births are not known, nothing but the
// contents may have been touched since.
bool wasLeftAlone(const FileStamp& stamp) {
    const qint64 begin = stamp.creation();
    const qint64 end = stamp.birth ? stamp.contentsChanged / 1'000'000
                                   : qMax(stamp.contentsChanged, stamp.attributesChanged) / 1'000'000;
    const std::chrono::milliseconds writing(end - begin);
    return writing >= -roundedDown && writing <= longestWriting;
}

bool fits(const ScreenshotTool& tool, const NamedMoment& named, const FileStamp& stamp) {
    const auto delay = delaySince(named, stamp.creationDate());
    return delay >= -clockDifference && delay < named.length + tool.patience;
}

// Under the name of each tool that has such names.
template <typename Visit>
void forEachTool(const QByteArray& fileName, Visit visit) {
    const QString name = QFile::decodeName(fileName);
    const QStringView stem = withoutPictureEnding(name);
    if (stem.isEmpty())
        return;
    for (const ScreenshotTool& tool : screenshotTools()) {
        if (const auto named = momentInName(stem, tool.names))
            visit(tool, *named);
    }
}

bool isSoftwareOf(const ScreenshotTool& tool, const QByteArray& value) {
    if (!tool.software)
        return false;
    const QByteArray expected(tool.software);
    return expected.startsWith('?') ? value.toLower().contains(expected.mid(1)) : value == expected;
}

bool hasOnlyTextsOf(const ScreenshotTool& tool, const QList<PictureText>& texts) {
    const QList<QByteArray> allowed = QByteArray(tool.texts).split('|');
    bool isSigned = !tool.software || *tool.software == '?';
    for (const PictureText& text : texts) {
        if (text.key == "Software") {
            if (!isSoftwareOf(tool, text.value))
                return false;
            isSigned = true;
        } else if (!allowed.contains(text.key)) {
            return false;
        }
    }
    return isSigned;
}

} // namespace

bool wasMadeWhenNamed(const QByteArray& fileName, const FileStamp& stamp) {
    if (!wasLeftAlone(stamp))
        return false;
    bool was = false;
    forEachTool(fileName,
                [&](const ScreenshotTool& tool, const NamedMoment& named) { was = was || fits(tool, named, stamp); });
    return was;
}

ScreenshotFacts factsOfFile(const QByteArray& fileName, const FileStamp& stamp, const CapturedPicture& picture,
                            const QSize& desktopPixels) {
    if (!stamp.isRegular)
        return {};
    const bool isWhole = picture.state == CapturedPicture::State::whole;
    const bool isPartOfDesktop = !picture.size.isEmpty() && picture.size.width() <= desktopPixels.width() &&
                                 picture.size.height() <= desktopPixels.height();
    ScreenshotFacts best;
    const auto count = [](ScreenshotFacts facts) { return qPopulationCount(static_cast<quint32>(facts.toInt())); };
    forEachTool(fileName, [&](const ScreenshotTool& tool, const NamedMoment& named) {
        ScreenshotFacts facts = ScreenshotFact::isScreenCapture;
        facts.setFlag(ScreenshotFact::captureType, isWhole && hasOnlyTextsOf(tool, picture.texts));
        facts.setFlag(ScreenshotFact::capturedRectangle,
                      isPartOfDesktop && wasLeftAlone(stamp) && fits(tool, named, stamp));
        if (count(facts) > count(best))
            best = facts;
    });
    return best;
}

} // namespace quenby
