#include "preferences/general/GeneralPane.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"
#include "preferences/general/GeneralPaneUi.h"
#include "preferences/general/NoticeLine.h"
#include "preferences/general/ScreenshotFolder.h"
#include "preferences/general/SettingCheckBox.h"
#include "preferences/general/SettingComboBox.h"
#include "preferences/shortcut/CustomShortcut.h"
#include "preferences/shortcut/ShortcutRecorder.h"
#include "widgets/ElidedLabel.h"
#include "widgets/PlainToolTip.h"

#include <QEvent>
#include <QPushButton>

#include <utility>

namespace quenby {

GeneralPane::GeneralPane(const Services& services, QWidget* parent)
    : QWidget(parent)
    , services_(services)
    , ui_(std::make_unique<GeneralPaneUi>(this, services.defaults)) {
    connectControls();
    connectShortcut();
    connect(&services_.defaults, &Defaults::changed, this, &GeneralPane::settingChanged);
    showStatusItem();
    showFolder();
    showShortcut();
}

GeneralPane::~GeneralPane() { setRecording(false); }

void GeneralPane::connectControls() {
    ui_->screenshotShare->setWriter([this](bool isOn) { services_.screenshotFolder.share_screeshot(isOn, window()); });
    connect(ui_->chooseFolder, &QPushButton::clicked, this,
            [this] { services_.screenshotFolder.chooseAnother(window()); });
    connect(ui_->searchedFolders, &QPushButton::clicked, this, &GeneralPane::screenshotFoldersRequested);
    if (services_.placeDecidedBy.isEmpty())
        return;
    ui_->place->setEnabled(false);
    ui_->place->setToolTip(plainToolTip(services_.placeDecidedBy));
    ui_->place->setAccessibleDescription(services_.placeDecidedBy);
}

void GeneralPane::connectShortcut() {
    ShortcutRecorder* view = ui_->customShortcutView;
    view->setAssociatedUserDefaultsKey(defaultsKey::customShortcut);
    ui_->customShortcutEnabled->setWriter([this](bool isOn) { services_.shortcut.setShortcutEnabled(isOn); });
    connect(view, &ShortcutRecorder::recordingBegan, this, [this] { setRecording(true); });
    connect(view, &ShortcutRecorder::recordingEnded, this, [this] { setRecording(false); });
    connect(view, &ShortcutRecorder::refused, this, [this](const QString& sentence) {
        keysRefused_ = sentence;
        showShortcut();
    });
    connect(&services_.shortcut, &CustomShortcut::stateChanged, this, &GeneralPane::showShortcut);
}

void GeneralPane::setValue() {
    for (SettingCheckBox* box :
         {ui_->showMenubarIcon, ui_->showUsegeText, ui_->notificationDisplay, ui_->launchAtLogin, ui_->screenshotShare,
          ui_->captureToLink, ui_->uploadsRestOnMetered, ui_->customShortcutEnabled})
        box->refresh();
    ui_->place->refresh();
    ui_->proxy->refresh();
    showStatusItem();
    showFolder();
    showShortcut();
}

void GeneralPane::settingChanged(const QString& key) {
    if (key == defaultsKey::showMenubarIcon || key == defaultsKey::showUsegeText)
        showStatusItem();
    else if (key == defaultsKey::screenshotShare || key == defaultsKey::DirectoryBookmark)
        showFolder();
    else if (key == defaultsKey::customShortcutEnabled)
        showShortcut();
}

// What is wrong with the folder may have been put right in another window.
bool GeneralPane::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate)
        checkFolder();
    return QWidget::event(event);
}

// --- The status item ------------------------------------------------------------------------------------------------

void GeneralPane::showStatusItem() {
    const bool isEmpty = !ui_->showMenubarIcon->isChecked() && !ui_->showUsegeText->isChecked();
    ui_->placeHint->tell(isEmpty ? tr("With both switched off, the item in the strip is only an empty place.")
                                 : QString());
}

// --- The screenshots ------------------------------------------------------------------------------------------------

void GeneralPane::showFolder() {
    const QString path = services_.screenshotFolder.path();
    ui_->folder->setText(path.isEmpty() ? tr("No folder chosen") : path);
    checkFolder();
}

void GeneralPane::checkFolder() {
    const int number = ++folderChecks_;
    services_.screenshotFolder.check(this, [this, number](const QString& sentence) {
        if (number == folderChecks_) // while nothing is uploaded, nothing is wrong
            ui_->folderNotice->tell(ui_->screenshotShare->isChecked() ? sentence : QString());
    });
}

// --- The shortcut ---------------------------------------------------------------------------------------------------

// Whoever presses the present keys in order to record them does not want what they do.
void GeneralPane::setRecording(bool isRecording) {
    if (std::exchange(isRecording_, isRecording) != isRecording)
        services_.shortcut.binder().setSuspended(isRecording);
}

void GeneralPane::showShortcut() {
    const bool isPossible = services_.noShortcutsBecause.isEmpty();
    ui_->customShortcutEnabled->setEnabled(isPossible);
    ui_->customShortcutView->setEnabled(isPossible && services_.shortcut.isShortcutEnabled());
    ui_->shortcutNotice->tell(shortcutTrouble());
    const QString chosen = services_.shortcut.binder().keysChosenByDesktop(defaultsKey::customShortcut);
    ui_->keysHint->tell(chosen.isEmpty() ? QString() : tr("The desktop has chosen these keys: %1").arg(chosen));
}

QString GeneralPane::shortcutTrouble() const {
    if (!services_.noShortcutsBecause.isEmpty())
        return services_.noShortcutsBecause;
    if (!keysRefused_.isEmpty() || !services_.shortcut.isShortcutEnabled())
        return keysRefused_;
    const MaybeError trouble = services_.shortcut.binder().trouble(defaultsKey::customShortcut);
    return trouble ? trouble->detail(errorKey::reason).toString() : QString();
}

} // namespace quenby
