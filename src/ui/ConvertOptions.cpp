#include "ui/ConvertOptions.h"

#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "ui/Fields.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QGridLayout>
#include <QToolButton>

namespace cantorel::ui {

namespace {

constexpr int kRoomForAll = 720; // width in which all choices stand side by side
constexpr int kFolder = 160;     // width of its name
constexpr const char *kFormats[] = {"mp3", "aac", "m4a", "m4r", "wma", "wav", "flac", "alac", "alac(m4a)"};

QStringList qualities() {
    return {Lang::video2mp3ExtremeQuality(), Lang::video2mp3HighQuality(), Lang::video2mp3StandardQuality()};
}

} // namespace

ConvertOptions::ConvertOptions(ZQAudioConvertManager &queue, QWidget *parent)
    : QWidget(parent),
      mQueue(queue),
      mGrid(new QGridLayout(this)),
      mFormat(new QComboBox(this)),
      mQuality(new QComboBox(this)),
      mFolder(new QToolButton(this)),
      mJoin(new QCheckBox(this)),
      mCells{cell(mFormat), cell(mQuality), cell(mFolder), cell(mJoin)},
      mNote(new QLabel(this)) {
    mFormat->setObjectName(QStringLiteral("convertFormat"));
    mQuality->setObjectName(QStringLiteral("convertQuality"));
    mFolder->setObjectName(QStringLiteral("convertFolder"));
    mJoin->setObjectName(QStringLiteral("convertJoin"));
    for (const char *format : kFormats)
        mFormat->addItem(QString::fromLatin1(format).toUpper());
    mFormat->setCurrentText(mQueue.preset().format.toUpper());
    mFolder->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mFolder->setFocusPolicy(Qt::StrongFocus);
    mNote->setWordWrap(true);
    mGrid->setContentsMargins(measure::kMargin, 2 * measure::kGap, measure::kMargin, 2 * measure::kGap);
    mGrid->setHorizontalSpacing(2 * measure::kGap);
    connect(mFormat, &QComboBox::activated, this, [this] { choose(); });
    connect(mQuality, &QComboBox::activated, this, [this] { choose(); });
    connect(mFolder, &QToolButton::clicked, this, [this] { chooseFolder(); });
    connect(mJoin, &QCheckBox::toggled, this, [this] { showState(); });
    showIcons();
    showTexts();
}

ConvertOptions::Cell ConvertOptions::cell(QWidget *choice) {
    Cell made{new QWidget(this), new QLabel(this), new QLabel(this), choice};
    auto *column = new QVBoxLayout(made.box);
    column->setContentsMargins({});
    column->setSpacing(measure::kGap / 2);
    made.name->setBuddy(choice);
    made.text->setWordWrap(true);
    made.text->setMinimumHeight(Look::tall(*this, measure::kField)); // so that nothing jumps
    made.text->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    column->addWidget(made.name);
    column->addWidget(made.choice, 0, qobject_cast<QCheckBox *>(choice) ? Qt::AlignLeft : Qt::Alignment());
    column->addWidget(made.text);
    column->addStretch();
    return made;
}

bool ConvertOptions::joins() const { return mJoin->isChecked(); }

void ConvertOptions::setRunning(bool isRunning) {
    mIsRunning = isRunning;
    showState();
}

void ConvertOptions::choose() {
    mQueue.outputAudioFormatDidChange(QString::fromLatin1(kFormats[mFormat->currentIndex()]), mQuality->currentText());
    showState();
}

void ConvertOptions::chooseFolder() {
    ui::chooseFolder(*this, Lang::commSelectFolder(), AppSettings::convertOutputPath(), [this](const QString &folder) {
        AppSettings::setConvertOutputPath(folder);
        showState();
    });
}

void ConvertOptions::showState() {
    const ConvertPreset &preset = mQueue.preset();
    // Deliberately not by the settings alone: ALAC is no lossless format there.
    const bool isLossless = AppSettings::isLosslessAudioFormat(preset.format) || preset.isAlac();
    const QString folder = AppSettings::convertOutputPath(), name = QDir(folder).dirName();
    mFolder->setText(fontMetrics().elidedText(name, Qt::ElideMiddle, Look::scaled(*this, kFolder)));
    mFolder->setToolTip(QDir::toNativeSeparators(folder));
    const QString texts[] = {mFormat->currentText(), isLossless ? Lang::windowLossless() : mQuality->currentText(),
                             name, mJoin->isChecked() ? Lang::btnOn() : Lang::btnOff()};
    for (std::size_t at = 0; at < mCells.size(); ++at) {
        const bool isText = mIsRunning || (at == 1 && isLossless);
        mCells[at].text->setText(texts[at]);
        mCells[at].text->setVisible(isText);
        mCells[at].choice->setVisible(!isText);
        setInk(*mCells[at].name, Look::tokens().text2);
    }
    setInk(*mNote, Look::tokens().text2);
}

void ConvertOptions::showTexts() {
    const QString names[] = {Lang::commFormat(), Lang::windowQuality(), Lang::commOutput(),
                             Lang::toolsConverterMerge()};
    for (std::size_t at = 0; at < mCells.size(); ++at) {
        mCells[at].name->setText(names[at]);
        mCells[at].name->setFont(Look::font(*this, text_size::kLabel));
        mCells[at].choice->setAccessibleName(names[at]);
    }
    showChoices(*mQuality, qualities());
    mNote->setText(Lang::windowOriginalsStay());
    mNote->setFont(Look::font(*this, text_size::kSecondLine));
    choose(); // whose quality is a text of the language
    fit();
}

void ConvertOptions::showIcons() { mFolder->setIcon(icon(QStringLiteral("folder"), palette())); }

void ConvertOptions::fit() {
    const int columns = width() < Look::scaled(*this, kRoomForAll) ? 2 : 4;
    for (int at = 0; at < static_cast<int>(mCells.size()); ++at)
        mGrid->addWidget(mCells[static_cast<std::size_t>(at)].box, at / columns, at % columns);
    for (int column = 0; column < 4; ++column)
        mGrid->setColumnStretch(column, column < columns ? 1 : 0);
    mGrid->addWidget(mNote, 2, 0, 1, columns);
}

void ConvertOptions::resizeEvent(QResizeEvent *event) {
    fit();
    QWidget::resizeEvent(event);
}

void ConvertOptions::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange) {
        showIcons();
        showState();
    }
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
