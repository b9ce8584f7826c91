#include "platform/linux/shortcuts/KeySymbols.h"

#include <QChar>

#include <algorithm>
#include <array>

namespace quenby {
namespace {

struct Named {
    xkb_keysym_t symbol;
    Qt::Key key;
};

constexpr std::array namedKeys{
    Named{XKB_KEY_Escape, Qt::Key_Escape},
    Named{XKB_KEY_Tab, Qt::Key_Tab},
    Named{XKB_KEY_ISO_Left_Tab, Qt::Key_Backtab},
    Named{XKB_KEY_BackSpace, Qt::Key_Backspace},
    Named{XKB_KEY_Return, Qt::Key_Return},
    Named{XKB_KEY_Insert, Qt::Key_Insert},
    Named{XKB_KEY_Delete, Qt::Key_Delete},
    Named{XKB_KEY_Clear, Qt::Key_Delete},
    Named{XKB_KEY_Pause, Qt::Key_Pause},
    Named{XKB_KEY_Print, Qt::Key_Print},
    Named{XKB_KEY_Sys_Req, Qt::Key_SysReq},
    Named{XKB_KEY_Scroll_Lock, Qt::Key_ScrollLock},
    Named{XKB_KEY_Home, Qt::Key_Home},
    Named{XKB_KEY_End, Qt::Key_End},
    Named{XKB_KEY_Left, Qt::Key_Left},
    Named{XKB_KEY_Up, Qt::Key_Up},
    Named{XKB_KEY_Right, Qt::Key_Right},
    Named{XKB_KEY_Down, Qt::Key_Down},
    Named{XKB_KEY_Prior, Qt::Key_PageUp},
    Named{XKB_KEY_Next, Qt::Key_PageDown},
    Named{XKB_KEY_Menu, Qt::Key_Menu},
    Named{XKB_KEY_Help, Qt::Key_Help},
    Named{XKB_KEY_Cancel, Qt::Key_Cancel},
    Named{XKB_KEY_Undo, Qt::Key_Undo},
    Named{XKB_KEY_Redo, Qt::Key_Redo},
    Named{XKB_KEY_Find, Qt::Key_Find},

    Named{XKB_KEY_KP_Space, Qt::Key_Space},
    Named{XKB_KEY_KP_Tab, Qt::Key_Tab},
    Named{XKB_KEY_KP_Enter, Qt::Key_Enter},
    Named{XKB_KEY_KP_Home, Qt::Key_Home},
    Named{XKB_KEY_KP_Left, Qt::Key_Left},
    Named{XKB_KEY_KP_Up, Qt::Key_Up},
    Named{XKB_KEY_KP_Right, Qt::Key_Right},
    Named{XKB_KEY_KP_Down, Qt::Key_Down},
    Named{XKB_KEY_KP_Prior, Qt::Key_PageUp},
    Named{XKB_KEY_KP_Next, Qt::Key_PageDown},
    Named{XKB_KEY_KP_End, Qt::Key_End},
    Named{XKB_KEY_KP_Begin, Qt::Key_Clear},
    Named{XKB_KEY_KP_Insert, Qt::Key_Insert},
    Named{XKB_KEY_KP_Delete, Qt::Key_Delete},

    Named{XKB_KEY_XF86MonBrightnessUp, Qt::Key_MonBrightnessUp},
    Named{XKB_KEY_XF86MonBrightnessDown, Qt::Key_MonBrightnessDown},
    Named{XKB_KEY_XF86KbdLightOnOff, Qt::Key_KeyboardLightOnOff},
    Named{XKB_KEY_XF86KbdBrightnessUp, Qt::Key_KeyboardBrightnessUp},
    Named{XKB_KEY_XF86KbdBrightnessDown, Qt::Key_KeyboardBrightnessDown},
    Named{XKB_KEY_XF86AudioLowerVolume, Qt::Key_VolumeDown},
    Named{XKB_KEY_XF86AudioMute, Qt::Key_VolumeMute},
    Named{XKB_KEY_XF86AudioRaiseVolume, Qt::Key_VolumeUp},
    Named{XKB_KEY_XF86AudioPlay, Qt::Key_MediaPlay},
    Named{XKB_KEY_XF86AudioStop, Qt::Key_MediaStop},
    Named{XKB_KEY_XF86AudioPrev, Qt::Key_MediaPrevious},
    Named{XKB_KEY_XF86AudioNext, Qt::Key_MediaNext},
    Named{XKB_KEY_XF86AudioRecord, Qt::Key_MediaRecord},
    Named{XKB_KEY_XF86AudioPause, Qt::Key_MediaPause},
    Named{XKB_KEY_XF86AudioRewind, Qt::Key_AudioRewind},
    Named{XKB_KEY_XF86AudioForward, Qt::Key_AudioForward},
    Named{XKB_KEY_XF86AudioRepeat, Qt::Key_AudioRepeat},
    Named{XKB_KEY_XF86AudioRandomPlay, Qt::Key_AudioRandomPlay},
    Named{XKB_KEY_XF86AudioMicMute, Qt::Key_MicMute},
    Named{XKB_KEY_XF86AudioMedia, Qt::Key_LaunchMedia},
    Named{XKB_KEY_XF86MyComputer, Qt::Key_LaunchMedia},
    Named{XKB_KEY_XF86HomePage, Qt::Key_HomePage},
    Named{XKB_KEY_XF86Mail, Qt::Key_LaunchMail},
    Named{XKB_KEY_XF86Search, Qt::Key_Search},
    Named{XKB_KEY_XF86Back, Qt::Key_Back},
    Named{XKB_KEY_XF86Forward, Qt::Key_Forward},
    Named{XKB_KEY_XF86Stop, Qt::Key_Stop},
    Named{XKB_KEY_XF86Refresh, Qt::Key_Refresh},
    Named{XKB_KEY_XF86Reload, Qt::Key_Reload},
    Named{XKB_KEY_XF86Favorites, Qt::Key_Favorites},
    Named{XKB_KEY_XF86OpenURL, Qt::Key_OpenUrl},
    Named{XKB_KEY_XF86History, Qt::Key_History},
    Named{XKB_KEY_XF86Calculator, Qt::Key_Calculator},
    Named{XKB_KEY_XF86Calendar, Qt::Key_Calendar},
    Named{XKB_KEY_XF86Explorer, Qt::Key_Explorer},
    Named{XKB_KEY_XF86WWW, Qt::Key_WWW},
    Named{XKB_KEY_XF86Tools, Qt::Key_Tools},
    Named{XKB_KEY_XF86Phone, Qt::Key_Phone},
    Named{XKB_KEY_XF86Messenger, Qt::Key_Messenger},
    Named{XKB_KEY_XF86Documents, Qt::Key_Documents},
    Named{XKB_KEY_XF86WebCam, Qt::Key_WebCam},
    Named{XKB_KEY_XF86MailForward, Qt::Key_MailForward},
    Named{XKB_KEY_XF86Reply, Qt::Key_Reply},
    Named{XKB_KEY_XF86Send, Qt::Key_Send},
    Named{XKB_KEY_XF86New, Qt::Key_New},
    Named{XKB_KEY_XF86Open, Qt::Key_Open},
    Named{XKB_KEY_XF86Save, Qt::Key_Save},
    Named{XKB_KEY_XF86Close, Qt::Key_Close},
    Named{XKB_KEY_XF86Cut, Qt::Key_Cut},
    Named{XKB_KEY_XF86Copy, Qt::Key_Copy},
    Named{XKB_KEY_XF86Paste, Qt::Key_Paste},
    Named{XKB_KEY_XF86Shop, Qt::Key_Shop},
    Named{XKB_KEY_XF86Finance, Qt::Key_Finance},
    Named{XKB_KEY_XF86Game, Qt::Key_Game},
    Named{XKB_KEY_XF86Music, Qt::Key_Music},
    Named{XKB_KEY_XF86Video, Qt::Key_Video},
    Named{XKB_KEY_XF86Memo, Qt::Key_Memo},
    Named{XKB_KEY_XF86ToDoList, Qt::Key_ToDoList},
    Named{XKB_KEY_XF86LightBulb, Qt::Key_LightBulb},
    Named{XKB_KEY_XF86DOS, Qt::Key_DOS},
    Named{XKB_KEY_XF86Go, Qt::Key_Go},
    Named{XKB_KEY_XF86MenuKB, Qt::Key_MenuKB},
    Named{XKB_KEY_XF86RotateWindows, Qt::Key_RotateWindows},
    Named{XKB_KEY_XF86TaskPane, Qt::Key_TaskPane},
    Named{XKB_KEY_XF86Xfer, Qt::Key_Xfer},
    Named{XKB_KEY_XF86ScreenSaver, Qt::Key_ScreenSaver},
    Named{XKB_KEY_XF86Display, Qt::Key_Display},
    Named{XKB_KEY_XF86Eject, Qt::Key_Eject},
    Named{XKB_KEY_XF86Sleep, Qt::Key_Sleep},
    Named{XKB_KEY_XF86Standby, Qt::Key_Standby},
    Named{XKB_KEY_XF86Suspend, Qt::Key_Suspend},
    Named{XKB_KEY_XF86Hibernate, Qt::Key_Hibernate},
    Named{XKB_KEY_XF86PowerOff, Qt::Key_PowerOff},
    Named{XKB_KEY_XF86PowerDown, Qt::Key_PowerDown},
    Named{XKB_KEY_XF86WakeUp, Qt::Key_WakeUp},
    Named{XKB_KEY_XF86Battery, Qt::Key_Battery},
    Named{XKB_KEY_XF86Bluetooth, Qt::Key_Bluetooth},
    Named{XKB_KEY_XF86WLAN, Qt::Key_WLAN},
    Named{XKB_KEY_XF86UWB, Qt::Key_UWB},
    Named{XKB_KEY_XF86TouchpadToggle, Qt::Key_TouchpadToggle},
    Named{XKB_KEY_XF86TouchpadOn, Qt::Key_TouchpadOn},
    Named{XKB_KEY_XF86TouchpadOff, Qt::Key_TouchpadOff},
};

// A row of symbols whose keys stand in the same order.
struct Row {
    xkb_keysym_t first;
    xkb_keysym_t last;
    Qt::Key key;
};

constexpr std::array rows{
    Row{XKB_KEY_F1, XKB_KEY_F35, Qt::Key_F1},
    Row{XKB_KEY_dead_grave, XKB_KEY_dead_longsolidusoverlay, Qt::Key_Dead_Grave},
    Row{XKB_KEY_Multi_key, XKB_KEY_Hangul_Special, Qt::Key_Multi_key}, // the keys of East Asian keyboards
    Row{XKB_KEY_XF86Launch0, XKB_KEY_XF86LaunchF, Qt::Key_Launch0},
};

} // namespace

Qt::Key keyOfSymbol(xkb_keysym_t symbol) {
    const auto* const named =
        std::find_if(namedKeys.begin(), namedKeys.end(), [symbol](const Named& each) { return each.symbol == symbol; });
    if (named != namedKeys.end())
        return named->key;
    const auto* const row = std::find_if(
        rows.begin(), rows.end(), [symbol](const Row& each) { return symbol >= each.first && symbol <= each.last; });
    if (row != rows.end())
        return static_cast<Qt::Key>(row->key + static_cast<int>(symbol - row->first));
    const char32_t character = xkb_keysym_to_utf32(symbol);
    constexpr char32_t deleteCharacter = 0x7f;
    if (character < U' ' || character == deleteCharacter)
        return Qt::Key_unknown;
    return capital(static_cast<Qt::Key>(character));
}

bool isOnKeypad(xkb_keysym_t symbol) { return symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_9; }

Qt::Key capital(Qt::Key key) {
    const auto code = static_cast<char32_t>(key);
    return code > QChar::LastValidCodePoint ? key : static_cast<Qt::Key>(QChar::toUpper(code));
}

} // namespace quenby
