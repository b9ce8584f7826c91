#include "preferences/window/PreferenceWindowUi.h"

#include "preferences/about/AboutPane.h"
#include "preferences/account/AccountPane.h"
#include "preferences/window/PreferenceWindow.h"
#include "widgets/Glyphs.h"

namespace quenby {
namespace {

// Of the whole window, in logical pixels.
constexpr int generalHeight = 332;
constexpr int accountHeight = 230;
constexpr int aboutHeight = 260;

} // namespace

PreferenceWindowUi::PreferenceWindowUi(PreferenceWindow& window, const GeneralPane::Services& services,
                                       const ProgramFacts& facts, Opener& opener)
    : generalView(new GeneralPane(services))
    , accountView(new AccountPane)
    , aboutView(new AboutPane(facts, opener)) {
    window.addPane({PreferenceWindow::tr("General"), gearGlyph(), generalView, generalHeight});
    window.addPane({PreferenceWindow::tr("Account"), personGlyph(), accountView, accountHeight});
    window.addPane({PreferenceWindow::tr("About"), infoGlyph(), aboutView, aboutHeight});
}

} // namespace quenby
