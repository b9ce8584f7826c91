#include "recording/review/ShareVideoUi.h"

#include "recording/review/PlayerPane.h"
#include "recording/review/ReviewWindow.h"
#include "widgets/ActivityIndicator.h"
#include "widgets/ElidedLabel.h"
#include "widgets/SecondaryLabel.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr QSize usualSize(960, 560);
constexpr QSize smallestPlayer(360, 200);
constexpr int margin = 16;
constexpr int sideWidth = 232;
constexpr int buttonHeight = 32;

QPushButton* makeButton(const QString& text, const QString& tip, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setAutoDefault(false);        // Return is the upload's
    button->setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard to the player
    button->setMinimumHeight(buttonHeight);
    button->setToolTip(tip);
    return button;
}

QLabel* makeFact(QGridLayout& facts, const QString& caption, QWidget* parent) {
    const int row = facts.rowCount();
    auto* name = new SecondaryLabel(parent);
    name->setText(caption);
    auto* value = new ElidedLabel(parent);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    value->setAccessibleName(caption);
    name->setBuddy(value);
    facts.addWidget(name, row, 0);
    facts.addWidget(value, row, 1);
    return value;
}

void makeBold(QLabel& label) {
    QFont font = label.font();
    font.setWeight(QFont::DemiBold);
    label.setFont(font);
}

QWidget* makeSavingRow(QWidget* parent) {
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(new ActivityIndicator(row));
    auto* text = new SecondaryLabel(row);
    text->setText(QStringLiteral("Saving a copy…"));
    layout->addWidget(text, 1);
    row->hide();
    return row;
}

// In the middle. Left alone, a dialog puts its title bar above a screen that it nearly fills.
void placeWindow(QWidget& window) {
    const QRect room = window.screen()->availableGeometry();
    const QSize smallest = window.layout()->totalMinimumSize();
    QRect place(QPoint(), usualSize.boundedTo(room.size() * 17 / 20).expandedTo(smallest));
    place.moveCenter(room.center());
    window.resize(place.size());
    window.move(place.topLeft() - QPoint(0, (place.top() - room.top()) / 2));
}

} // namespace

ShareVideoUi::ShareVideoUi(ReviewWindow& window)
    : playerView(new PlayerPane(&window))
    , side(new QWidget(&window))
    , fileName(new ElidedLabel(side))
    , uploadButton(makeButton(QStringLiteral("&Upload to Drive"),
                              QStringLiteral("Uploads the recording into the folder “Screen Cast” of your Drive"),
                              side))
    , saveButton(makeButton(QStringLiteral("&Save a Copy…"),
                            QStringLiteral("Copies the recording to a place of your choice"), side))
    , openButton(makeButton(QStringLiteral("&Open in Movie Player"),
                            QStringLiteral("Opens the recording in your default program for movies"), side))
    , recordAgainButton(makeButton(QStringLiteral("&Record Again"),
                                   QStringLiteral("Closes this window and begins a new recording"), side))
    , discardButton(makeButton(QStringLiteral("&Discard"),
                               QStringLiteral("Closes this window without uploading or saving the recording"), side))
    , savingRow(makeSavingRow(side)) {
    auto* facts = new QGridLayout;
    facts->setHorizontalSpacing(12);
    facts->setVerticalSpacing(4);
    facts->setColumnStretch(1, 1);
    videoSize = makeFact(*facts, QStringLiteral("Size"), side);
    videoDuration = makeFact(*facts, QStringLiteral("Length"), side);
    videoFileSize = makeFact(*facts, QStringLiteral("File size"), side);
    makeBold(*fileName);
    fileName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    uploadButton->setDefault(true);

    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(8);
    column->addWidget(fileName);
    column->addLayout(facts);
    column->addStretch(1);
    column->addWidget(savingRow);
    for (QPushButton* button : {uploadButton, saveButton, openButton, recordAgainButton, discardButton})
        column->addWidget(button);
    side->setFixedWidth(sideWidth);
    playerView->setMinimumSize(smallestPlayer);

    auto* layout = new QHBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(playerView, 1);
    layout->addWidget(side);
    window.setPlayerPane(playerView);
    placeWindow(window);
    playerView->setFocus();
}

void ShareVideoUi::setFileName(const QString& name) {
    const QFontMetrics metrics = fileName->fontMetrics();
    const QStringList words = name.split(QLatin1Char(' '));
    fileName->setWordWrap(std::all_of(words.begin(), words.end(), [&metrics](const QString& word) {
        return metrics.horizontalAdvance(word) <= sideWidth - 2 * margin;
    }));
    fileName->setText(name);
}

void ShareVideoUi::setPlayerAlone(bool isAlone) {
    side->setVisible(!isAlone);
    playerView->setFullScreen(isAlone);
    playerView->setFocus();
}

void ShareVideoUi::setSaving(bool isSaving) {
    savingRow->setVisible(isSaving);
    for (QPushButton* button : {uploadButton, saveButton, recordAgainButton, discardButton})
        button->setEnabled(!isSaving);
}

} // namespace quenby
