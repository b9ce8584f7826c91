#include "app/statusitem/StatusMenuCommands.h"

namespace quenby {
namespace {

using enum MenuCommandRow::Availability;

// The mnemonics of one menu differ; "Show in Status Bar" takes I. A mnemonic comes before an ampersand that is meant:
// trays take it that way alone.
constexpr MenuCommandRow rows[] = {
    {MenuCommand::showChanges, "Show &Changes", always},
    {MenuCommand::showQuenby, "&Show Quenby", always},
    {MenuCommand::uploadFile, "&Upload File", disabledWhenSignedOut},
    {MenuCommand::uploadAndShareFile, "Up&load && Share File", disabledWhenSignedOut},
    {MenuCommand::captureAndUploadScreenshot, "C&apture && Upload Screenshot", disabledWhenSignedOut},
    {MenuCommand::uploadClipboard, "Upload Clip&board", disabledWhenSignedOut},
    {MenuCommand::recordScreen, "&Record Screen", always},
    {MenuCommand::showUploads, "Uploa&ds…", always},
    {MenuCommand::preferences, "&Preferences…", always},
    {MenuCommand::signIn, "Si&gn In", hiddenWhenSignedIn},
    {MenuCommand::signOut, "Sign &Out", hiddenWhenSignedOut},
    {MenuCommand::quit, "&Quit Quenby", always},
};

} // namespace

std::span<const MenuCommandRow> menuCommands() { return rows; }

} // namespace quenby
