// The screenshot tools that are known: how each names its files, what it writes into them, and where it puts them.
// Another tool is one more row of the table in ScreenshotTools.cpp.
//
// Threads: any; the table is constant.
#pragma once

#include <QByteArray>
#include <QStringView>

#include <chrono>
#include <span>

namespace quenby {

struct ScreenshotTool {
    const char* name; // for whoever reads the table

    // Forms of its files' names, without their ending and separated by "|"; MomentInName.h says how they are written.
    const char16_t* names;

    // What stands in its files as the text "Software"; null: nothing. With a "?" in front not all versions write it.
    const char* software;
    // Other texts that its files may have, separated by "|".
    const char* texts;

    // Where it keeps the folder that the user chose: a file in the configuration folder, ":", and the keys in it; null
    // when it keeps it elsewhere. Besides that folder every tool may save in the usual ones (ScreenshotFolders.h).
    const char* setting;

    // How long after the moment in its name a file may be made: seconds for a tool that saves at once, minutes for one
    // that asks the user about the file first.
    std::chrono::seconds patience;
};

std::span<const ScreenshotTool> screenshotTools();

// Whether some tool names its files like this one (bytes, without a folder).
bool isScreenshotName(const QByteArray& fileName);
// Without the ending that pictures have; null when this is no picture's name.
QStringView withoutPictureEnding(QStringView fileName);

} // namespace quenby
