// Every command of the system that a menu offers, in one table. Threads: any.
#pragma once

#include <QObject>
#include <QString>

#include <span>

namespace quenby {

enum class MenuCommand {
    showChanges, // opens the popover
    showQuenby,  // the workspace window
    uploadFile,
    uploadAndShareFile,
    captureAndUploadScreenshot,
    uploadClipboard,
    recordScreen,
    showUploads, // the queue
    preferences,
    signIn,
    signOut,
    quit,
};

struct MenuCommandRow {
    // Who has to be signed in for it; whoever is not, is not even shown what is hidden.
    enum class Availability { always, disabledWhenSignedOut, hiddenWhenSignedOut, hiddenWhenSignedIn };

    MenuCommand command;
    const char* text; // English, with its mnemonic
    Availability availability;
};

std::span<const MenuCommandRow> menuCommands();

} // namespace quenby
