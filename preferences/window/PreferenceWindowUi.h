// The preferences' panes in their window, which owns them.
#pragma once

#include "preferences/general/GeneralPane.h"

namespace quenby {

class AboutPane;
class AccountPane;
class Opener;
class PreferenceWindow;
struct ProgramFacts;

struct PreferenceWindowUi {
    // In the order of the toolbar's items.
    enum Index { general, account, about };

    PreferenceWindowUi(PreferenceWindow& window, const GeneralPane::Services& services, const ProgramFacts& facts,
                       Opener& opener);

    GeneralPane* generalView;
    AccountPane* accountView;
    AboutPane* aboutView;
};

} // namespace quenby
