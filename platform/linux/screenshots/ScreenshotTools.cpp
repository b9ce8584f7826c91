#include "platform/linux/screenshots/ScreenshotTools.h"

#include "platform/linux/screenshots/MomentInName.h"

#include <QFile>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto atOnce = 10s; // also on a slow disk
constexpr auto asks = 10min; // people look at the picture, and may be called away

// Tools that write no text of their own are known by their words alone, so that a messenger's "photo_" or "IMG-" of
// the same form is none of theirs.
constexpr ScreenshotTool table[] = {
    // clang-format off
    {"GNOME Shell, gnome-screenshot", u"%a%Y-%m-%d %H-%M-%S|%Y-%m-%d %H-%M-%S%a", "gnome-screenshot", "Creation Time", nullptr, asks},
    {"MATE", u"%a%Y-%m-%d %H-%M-%S", "mate-screenshot", nullptr, nullptr, asks},
    {"Spectacle", u"%w_%Y%m%d_%H%M%S", "?spectacle", "Title|Creation Time|Author|Description", "spectaclerc:imageSaveLocation|defaultImageSaveLocation|defaultSaveLocation", asks},
    {"xfce4-screenshooter, COSMIC", u"%w_%Y-%m-%d_%H-%M-%S", nullptr, nullptr, "xfce4/xfce4-screenshooter:screenshot_dir", asks},
    {"flameshot", u"%Y-%m-%d_%H-%M|%Y-%m-%d_%H-%M-%S", nullptr, nullptr, "flameshot/flameshot.ini:savePath", asks},
    {"scrot", u"%Y-%m-%d-%H%M%S_%nx%n_scrot", nullptr, nullptr, nullptr, atOnce},
    {"grim", u"%Y%m%d_%Hh%Mm%Ss_grim", nullptr, nullptr, nullptr, atOnce},
    {"grimshot", u"%Y-%m-%dT%H:%M:%S,%n%z", nullptr, nullptr, nullptr, atOnce},
    {"hyprshot", u"%Y-%m-%d-%H%M%S_hyprshot", nullptr, nullptr, nullptr, atOnce},
    {"niri", u"%w from %Y-%m-%d %H-%M-%S", nullptr, nullptr, nullptr, atOnce},
    {"Pantheon", u"%w from %Y-%m-%d %H.%M.%S", nullptr, nullptr, nullptr, asks},
    {"Deepin", u"DeepinScreenshot_%a_%Y%m%d%H%M%S", nullptr, nullptr, nullptr, asks},
    {"ksnip", u"ksnip_%Y%m%d-%H%M%S", nullptr, nullptr, nullptr, asks},
    {"LXQt", u"screen-%Y-%m-%d-%H-%M-%S", nullptr, nullptr, nullptr, asks},
    // It takes the name from the command line, for which people write a date.
    {"maim", u"%s|maim_%s|%Y-%m-%d-%H%M%S|%Y-%m-%d_%H-%M-%S|%Y-%m-%dT%H:%M:%S%z|%w_%Y%m%d_%H%M%S|%w-%Y-%m-%d-%H-%M-%S|%w-%Y%m%d-%H%M%S", nullptr, nullptr, nullptr, atOnce},
    // clang-format on
};

} // namespace

std::span<const ScreenshotTool> screenshotTools() { return table; }

QStringView withoutPictureEnding(QStringView fileName) {
    for (const QStringView ending : {u".png", u".jpg", u".jpeg", u".webp"}) {
        if (fileName.size() > ending.size() && fileName.endsWith(ending, Qt::CaseInsensitive))
            return fileName.chopped(ending.size());
    }
    return {};
}

bool isScreenshotName(const QByteArray& fileName) {
    const QString name = QFile::decodeName(fileName);
    const QStringView stem = withoutPictureEnding(name);
    if (stem.isEmpty())
        return false;
    for (const ScreenshotTool& tool : table) {
        if (momentInName(stem, tool.names))
            return true;
    }
    return false;
}

} // namespace quenby
