// The general pane's widgets and where they stand. Owned by the pane that they are made for.
#pragma once

class QPushButton;
class QWidget;

namespace quenby {

class Defaults;
class ElidedLabel;
class NoticeLine;
class SettingCheckBox;
class SettingComboBox;
class ShortcutRecorder;

struct GeneralPaneUi {
    GeneralPaneUi(QWidget* pane, Defaults& defaults);

    SettingCheckBox* showMenubarIcon;
    SettingCheckBox* showUsegeText;
    SettingComboBox* place;
    NoticeLine* placeHint;
    SettingCheckBox* notificationDisplay;
    SettingCheckBox* launchAtLogin;
    SettingCheckBox* screenshotShare;
    ElidedLabel* folder;
    QPushButton* chooseFolder;
    QPushButton* searchedFolders;
    NoticeLine* folderNotice;
    SettingCheckBox* captureToLink;
    SettingCheckBox* uploadsRestOnMetered;
    SettingCheckBox* customShortcutEnabled;
    ShortcutRecorder* customShortcutView;
    NoticeLine* shortcutNotice;
    NoticeLine* keysHint;
    SettingComboBox* proxy;
};

} // namespace quenby
