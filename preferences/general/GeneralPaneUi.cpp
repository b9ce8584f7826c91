#include "preferences/general/GeneralPaneUi.h"

#include "core/DefaultsKeys.h"
#include "preferences/general/GeneralPane.h"
#include "preferences/general/NoticeLine.h"
#include "preferences/general/SettingCheckBox.h"
#include "preferences/general/SettingComboBox.h"
#include "preferences/shortcut/ShortcutRecorder.h"
#include "widgets/SecondaryLabel.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>

#include <initializer_list>

namespace quenby {
namespace {

constexpr int margin = 16;
constexpr int verticalMargin = 10;
constexpr int columnDistance = 12;
constexpr int rowDistance = 3;
constexpr int controlDistance = 12; // of two in one row

enum Column { captions, controls };

QString tr(const char* text) { return GeneralPane::tr(text); }

// The layout of a form: captions that end where their controls begin.
class Form {
public:
    explicit Form(QWidget* pane)
        : pane_(pane)
        , grid_(new QGridLayout) {
        grid_->setHorizontalSpacing(columnDistance);
        grid_->setVerticalSpacing(rowDistance);
        grid_->setColumnStretch(controls, 1);
        auto* layout = new QVBoxLayout(pane);
        layout->setContentsMargins(margin, verticalMargin, margin, verticalMargin);
        layout->addLayout(grid_);
        layout->addStretch(1);
    }

    // The caption's mnemonic leads to the first control. The last one that is told to stretch takes what is left.
    void addRow(const QString& caption, std::initializer_list<QWidget*> widgets, QWidget* stretched = nullptr) {
        const int row = grid_->rowCount();
        if (!caption.isEmpty()) {
            auto* label = new QLabel(caption, pane_);
            label->setBuddy(*widgets.begin());
            grid_->addWidget(label, row, captions, Qt::AlignRight | Qt::AlignVCenter);
        }
        auto* line = new QHBoxLayout;
        line->setSpacing(controlDistance);
        for (QWidget* widget : widgets)
            line->addWidget(widget, widget == stretched ? 1 : 0);
        if (!stretched)
            line->addStretch(1);
        grid_->addLayout(line, row, controls);
    }
    // Below the row that was added last.
    void addNotice(NoticeLine* notice) { grid_->addWidget(notice, grid_->rowCount(), controls); }

private:
    QWidget* pane_;
    QGridLayout* grid_;
};

SettingComboBox* makePlace(Defaults& defaults, QWidget* pane) {
    auto* place = new SettingComboBox(defaults, defaultsKey::statusItemPlace, pane);
    place->addDefaultChoice(tr("Automatic"));
    place->addChoice(tr("Tray"), QStringLiteral("tray"));
    place->addChoice(tr("Strip at the top edge"), QStringLiteral("strip"));
    place->setAccessibleName(tr("Place of the status item"));
    return place;
}

SettingComboBox* makeProxy(Defaults& defaults, QWidget* pane) {
    auto* proxy = new SettingComboBox(defaults, defaultsKey::proxy, pane);
    proxy->addDefaultChoice(tr("As the system has it"));
    proxy->addChoice(tr("None"), QStringLiteral("none"));
    proxy->setAccessibleName(tr("Proxy"));
    return proxy;
}

QPushButton* makeButton(const QString& text, const QString& tip, QWidget* pane) {
    auto* button = new QPushButton(text, pane);
    button->setAutoDefault(true); // so that Return presses it, too
    button->setToolTip(tip);
    button->setAccessibleDescription(tip);
    return button;
}

} // namespace

GeneralPaneUi::GeneralPaneUi(QWidget* pane, Defaults& defaults)
    : showMenubarIcon(new SettingCheckBox(tr("Show the &icon"), defaults, defaultsKey::showMenubarIcon, false, pane))
    , showUsegeText(new SettingCheckBox(tr("Show the &storage use"), defaults, defaultsKey::showUsegeText, false, pane))
    , place(makePlace(defaults, pane))
    , placeHint(new NoticeLine(NoticeLine::Kind::hint, showMenubarIcon, pane))
    , notificationDisplay(new SettingCheckBox(tr("&Notify of changes in the Drive and of uploads"), defaults,
                                              defaultsKey::notificationDisplay, true, pane))
    , launchAtLogin(new SettingCheckBox(tr("Start at &login"), defaults, defaultsKey::launchAtLogin, false, pane))
    , screenshotShare(new SettingCheckBox(tr("&Upload new screenshots automatically"), defaults,
                                          defaultsKey::screenshotShare, false, pane))
    , folder(new SecondaryLabel(pane))
    , chooseFolder(makeButton(tr("&Choose…"), tr("Chooses the folder whose screenshots are uploaded"), pane))
    , searchedFolders(makeButton(tr("&Folders…"), tr("Shows in which folders screenshots are looked for"), pane))
    , folderNotice(new NoticeLine(NoticeLine::Kind::trouble, screenshotShare, pane))
    , captureToLink(
          new SettingCheckBox(tr("Copy the lin&k of captures"), defaults, defaultsKey::captureToLink, true, pane))
    , uploadsRestOnMetered(new SettingCheckBox(tr("Pause uploads on &metered connections"), defaults,
                                               defaultsKey::uploadsRestOnMetered, true, pane))
    , customShortcutEnabled(
          new SettingCheckBox(tr("Show the &window with"), defaults, defaultsKey::customShortcutEnabled, false, pane))
    , customShortcutView(new ShortcutRecorder(defaults, pane))
    , shortcutNotice(new NoticeLine(NoticeLine::Kind::trouble, customShortcutEnabled, pane))
    , keysHint(new NoticeLine(NoticeLine::Kind::hint, customShortcutView, pane))
    , proxy(makeProxy(defaults, pane)) {
    Form form(pane);
    form.addRow(tr("Status item:"), {showMenubarIcon, showUsegeText});
    form.addRow(tr("&Place:"), {place});
    form.addNotice(placeHint);
    form.addRow(tr("Notifications:"), {notificationDisplay});
    form.addRow(tr("Login:"), {launchAtLogin});
    form.addRow(tr("Screenshots:"), {screenshotShare});
    form.addRow({}, {folder, chooseFolder, searchedFolders}, folder);
    form.addNotice(folderNotice);
    form.addRow(tr("Captures:"), {captureToLink});
    form.addRow(tr("Uploads:"), {uploadsRestOnMetered});
    form.addRow(tr("Shortcut:"), {customShortcutEnabled, customShortcutView}, customShortcutView);
    form.addNotice(shortcutNotice);
    form.addNotice(keysHint);
    form.addRow(tr("Pro&xy:"), {proxy});

    QWidget* last = showMenubarIcon;
    for (QWidget* next : std::initializer_list<QWidget*>{
             showUsegeText, place, notificationDisplay, launchAtLogin, screenshotShare, chooseFolder, searchedFolders,
             captureToLink, uploadsRestOnMetered, customShortcutEnabled, customShortcutView, proxy}) {
        QWidget::setTabOrder(last, next);
        last = next;
    }
}

} // namespace quenby
