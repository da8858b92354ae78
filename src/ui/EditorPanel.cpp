#include "ui/EditorPanel.h"

#include "editor/ZQAudioEditorManager.h"
#include "lang/Lang.h"
#include "tags/id3Tag.h"
#include "tags/pictures/DecodedPicture.h"
#include "ui/ExportPartsTable.h"
#include "ui/Fields.h"
#include "ui/FileDialogs.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"
#include "util/ToolString.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSlider>

#include <cmath>
#include <utility>

namespace cantorel::ui {

namespace {

using Exporting = ZQAudioEditExportController;

constexpr const char *kNames[] = {"exportTitle", "exportArtist", "exportAlbum", "exportYear", "exportGenre"};
constexpr int kCover = 88;
constexpr int kSoftest = -80, kLoudest = -1, kThreshold = -40; // in decibels
constexpr double kShortest = 0.1, kLongest = 60, kLeast = 1;   // silences, in seconds

QString menuText(InsertType type) {
    switch (type) {
    case InsertType::Silence:
        return Lang::toolsEditormenuInsertSilence();
    case InsertType::Append:
        return Lang::toolsEditormenuAppendSound();
    case InsertType::Insert:
        return Lang::toolsEditormenuInsertSound();
    case InsertType::Mix:
        return Lang::toolsEditormenuMixSound();
    case InsertType::Overwrite:
        return Lang::toolsEditormenuOverwrite();
    }
    return {};
}

QString withoutDots(QString text) {
    while (text.endsWith(QLatin1Char('.')) || text.endsWith(QChar(0x2026)))
        text.chop(1);
    return text;
}

} // namespace

QString insertText(InsertType type) { return withoutDots(menuText(type)); }

EditorPanel::EditorPanel(ZQAudioEditorManager &manager, QWidget *parent)
    : PagePanel(parent),
      mManager(manager),
      mFile(new QLabel(this)),
      mTrouble(new QLabel(this)),
      mPosition(new ZQAudioTimeView(this)),
      mLength(new ZQAudioTimeView(this)),
      mCover(new QLabel(this)),
      mFormat(new QComboBox(this)),
      mMode(new QComboBox(this)),
      mGenre(new QComboBox(this)),
      mParts(new ExportPartsTable(manager.exporting(), this)),
      mImage(new QWidget(this)),
      mThreshold(new QSlider(Qt::Horizontal, this)),
      mShortest(new QDoubleSpinBox(this)),
      mAddImage(new QPushButton(mImage)),
      mDeleteImage(new QPushButton(mImage)),
      mClear(new QPushButton(this)),
      mConfirm(new QPushButton(this)),
      mCancel(new QPushButton(this)) {
    mConfirm->setObjectName(QStringLiteral("confirmEdit"));
    mConfirm->setDefault(true);
    mCancel->setObjectName(QStringLiteral("cancelEdit"));
    mTrouble->setObjectName(QStringLiteral("editTrouble"));
    mTrouble->setWordWrap(true);
    makeSilences();
    makeInsert();
    makeExport();
    fields().addStretch();
    notes().addWidget(mTrouble);
    buttons().addWidget(mConfirm, 1);
    buttons().addWidget(mCancel, 1);
    connect(mConfirm, &QPushButton::clicked, this, [this] { confirm(); });
    connect(mCancel, &QPushButton::clicked, this, [this] {
        mManager.inserting().actionForCancel();
        Q_EMIT done();
    });
    connect(&mManager.exporting(), &Exporting::changed, this, [this] {
        if (mAsks == Asks::Export)
            showExport();
    });
    connect(&mManager.exporting(), &Exporting::partsChanged, this, [this] {
        if (mAsks == Asks::Export)
            showParts();
    });
    connect(&mManager, &ZQAudioEditorManager::cutsChanged, this, [this] {
        if (mAsks == Asks::Silences)
            showSilences();
    });
    showTexts();
}

void EditorPanel::addGroupField(QList<QWidget *> &group, QLabel *&label, QWidget &field) {
    label = &addField(field);
    group << label << &field;
}

void EditorPanel::makeInsert() {
    mFile->setWordWrap(true);
    mFile->setObjectName(QStringLiteral("insertFile"));
    mPosition->setObjectName(QStringLiteral("insertPosition"));
    mLength->setObjectName(QStringLiteral("insertLength"));
    mPosition->delegate = mLength->delegate = this;
    addGroupField(mInsertParts, mFileLabel, *mFile);
    addGroupField(mInsertParts, mPositionLabel, *mPosition);
    addGroupField(mInsertParts, mLengthLabel, *mLength);
}

void EditorPanel::makeExport() {
    mFormat->setObjectName(QStringLiteral("exportFormat"));
    for (const QString &type : Exporting::fileTypes())
        mFormat->addItem(type.toUpper(), type);
    connect(mFormat, &QComboBox::activated, this,
            [this] { mManager.exporting().selectExportFormat(mFormat->currentData().toString()); });
    addGroupField(mExportParts, mFormatLabel, *mFormat);
    mMode->setObjectName(QStringLiteral("exportMode"));
    mMode->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    mMode->addItems({QString(), QString()}); // joined; one file for each
    connect(mMode, &QComboBox::activated, this, [this](int mode) {
        mode == 0 ? mManager.exporting().exportMethod_Merger() : mManager.exporting().exportMethod_Part();
    });
    addGroupField(mExportParts, mModeLabel, *mMode);
    fields().addWidget(mParts);
    fields().addSpacing(measure::kGap);
    mExportParts << mParts;
    mAddImage->setObjectName(QStringLiteral("addExportImage"));
    mDeleteImage->setObjectName(QStringLiteral("deleteExportImage"));
    auto *image = rowIn(mImage, measure::kGap);
    image->addWidget(mCover);
    auto *imageButtons = new QVBoxLayout;
    imageButtons->addWidget(mAddImage);
    imageButtons->addWidget(mDeleteImage);
    image->addLayout(imageButtons, 1);
    connect(mAddImage, &QPushButton::clicked, this, [this] { chooseImage(); });
    connect(mDeleteImage, &QPushButton::clicked, &mManager.exporting(), &Exporting::deleteTheArtwotkImage);
    addGroupField(mExportParts, mCoverLabel, *mImage);
    mGenre->setEditable(true);
    mGenre->setInsertPolicy(QComboBox::NoInsert);
    mGenre->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    mGenre->addItems(id3Tag::getAllGenreList());
    for (std::size_t field = 0; field < mTags.size(); ++field) {
        mTags[field] = field == Exporting::Genre ? static_cast<QWidget *>(mGenre) : new QLineEdit(this);
        mTags[field]->setObjectName(QString::fromLatin1(kNames[field]));
        addGroupField(mExportParts, mTagLabels[field], *mTags[field]);
        const auto set = [this, field](const QString &text) {
            mManager.exporting().setText(static_cast<Exporting::Field>(field), text);
        };
        connect(lineOf(field), &QLineEdit::textEdited, this, set);
        if (field == Exporting::Genre)
            connect(mGenre, &QComboBox::textActivated, this, set);
    }
    mClear->setObjectName(QStringLiteral("clearExportTags"));
    connect(mClear, &QPushButton::clicked, &mManager.exporting(), &Exporting::clearID3Info);
    fields().addWidget(mClear);
    mExportParts << mClear;
}

void EditorPanel::makeSilences() {
    mThreshold->setObjectName(QStringLiteral("silenceThreshold"));
    mThreshold->setRange(kSoftest, kLoudest);
    mThreshold->setValue(kThreshold);
    mShortest->setObjectName(QStringLiteral("shortestSilence"));
    mShortest->setDecimals(1);
    mShortest->setSingleStep(kShortest);
    mShortest->setRange(kShortest, kLongest);
    mShortest->setValue(kLeast);
    addGroupField(mSilenceParts, mThresholdLabel, *mThreshold);
    addGroupField(mSilenceParts, mShortestLabel, *mShortest);
    connect(mThreshold, &QSlider::valueChanged, this, [this] { find(); });
    connect(mShortest, &QDoubleSpinBox::valueChanged, this, [this] { find(); });
}

void EditorPanel::find() {
    mManager.showBetweenSilences(mThreshold->value(), mShortest->value());
    showSilences();
}

QLineEdit *EditorPanel::lineOf(std::size_t field) const {
    return field == Exporting::Genre ? mGenre->lineEdit() : static_cast<QLineEdit *>(mTags[field]);
}

void EditorPanel::ask(Asks what) {
    if (what != Asks::Silences) // which may have been asked for before
        mManager.acceptFound();
    mAsks = what;
    setWide(false);
    for (const auto &[asks, parts] : {std::pair(Asks::Insert, &mInsertParts), std::pair(Asks::Export, &mExportParts),
                                      std::pair(Asks::Silences, &mSilenceParts)})
        for (QWidget *part : *parts)
            part->setVisible(asks == what);
    mTrouble->clear();
    mTrouble->hide();
    mConfirm->show();
    showTexts();
    if (what == Asks::Silences)
        find();
    if (what == Asks::Insert)
        mPosition->setFocus(Qt::TabFocusReason);
    else
        (what == Asks::Export ? static_cast<QWidget *>(mFormat) : mThreshold)->setFocus(Qt::OtherFocusReason);
}

void EditorPanel::showInsert() {
    const ZQAudioInsertController &inserting = mManager.inserting();
    for (QWidget *part : {static_cast<QWidget *>(mFileLabel), static_cast<QWidget *>(mFile)})
        part->setVisible(!inserting.asksForLength());
    for (QWidget *part : {static_cast<QWidget *>(mLengthLabel), static_cast<QWidget *>(mLength)})
        part->setVisible(inserting.asksForLength());
    mFile->setText(inserting.fileName() + QStringLiteral(", ")
                   + ToolString::stringFromDuration(inserting.fileDuration()));
    mPosition->setTime(inserting.position(), 0, inserting.mainDuration());
    mLength->setTime(inserting.length(), 0, ZQAudioInsertController::kLongest);
}

void EditorPanel::showExport() {
    const Exporting &exporting = mManager.exporting();
    mFormat->setCurrentIndex(static_cast<int>(Exporting::fileTypes().indexOf(exporting.fileType())));
    mMode->setCurrentIndex(exporting.isMerger() ? 0 : 1);
    for (QWidget *part : {static_cast<QWidget *>(mModeLabel), static_cast<QWidget *>(mMode)})
        part->setVisible(exporting.isExportModePartEnabled());
    showParts();
    const bool hasTags = exporting.isID3ViewOpen();
    for (QWidget *part : {static_cast<QWidget *>(mCoverLabel), mImage, static_cast<QWidget *>(mClear)})
        part->setVisible(hasTags);
    for (std::size_t field = 0; field < mTags.size(); ++field) {
        mTags[field]->setVisible(hasTags);
        mTagLabels[field]->setVisible(hasTags);
        const QString text = exporting.text(static_cast<Exporting::Field>(field));
        if (lineOf(field)->text() != text)
            lineOf(field)->setText(text);
    }
    const int side = Look::scaled(*this, kCover);
    const QImage image = decodedPicture(exporting.artwork(), qRound(side * devicePixelRatioF()));
    QPixmap cover = QPixmap::fromImage(image);
    cover.setDevicePixelRatio(devicePixelRatioF());
    mCover->setPixmap(cover);
    mCover->setVisible(hasTags && !image.isNull());
    mDeleteImage->setVisible(hasTags && !image.isNull());
}

void EditorPanel::showParts() {
    const bool areAsked = mManager.exporting().arePartsAsked();
    mParts->setVisible(areAsked);
    setWide(areAsked);
    if (areAsked)
        mParts->showParts();
}

void EditorPanel::showSilences() {
    const QLocale locale = Lang::locale();
    const auto level = [&locale](QString text, double decibels) {
        return text.replace(QLatin1String("[#Level#]"), locale.toString(qRound(decibels)));
    };
    const QString below = level(Lang::windowSilenceBelow(), mThreshold->value());
    mThresholdLabel->setText(below);
    mThreshold->setAccessibleName(below);
    const SilenceFinder::Found *found = mManager.found();
    const auto count = found ? found->sound.size() : 0;
    mConfirm->setVisible(count > 0);
    mTrouble->setVisible(found);
    if (!found)
        return;
    inkTrouble();
    // Rounded down: a silence that is too short never looks long enough.
    mTrouble->setText(count > 0           ? QStringLiteral("%1: %2").arg(Lang::toolsEditorSelection()).arg(count)
                      : found->hasSilence ? level(Lang::windowNothingLouder(), found->loudest)
                                          : Lang::windowNoSuchSilence().replace(
                                              QLatin1String("[#Seconds#]"),
                                              locale.toString(std::floor(found->longest * 100) / 100, 'f', 2)));
}

// How many were found is no trouble.
void EditorPanel::inkTrouble() {
    const SilenceFinder::Found *found = mAsks == Asks::Silences ? mManager.found() : nullptr;
    setInk(*mTrouble, found && !found->sound.empty() ? Look::tokens().text : Look::tokens().red);
}

void EditorPanel::changeEvent(QEvent *event) {
    if (event->type() == QEvent::PaletteChange)
        inkTrouble();
    PagePanel::changeEvent(event);
}

void EditorPanel::chooseImage() {
    const QString name = Lang::toolsID3TagsArtwork();
    const QStringList types{QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg")};
    chooseFile(*this, name, {}, {name, types}, [this](const QString &file) {
        if (!mManager.exporting().addNewArtworkImage(file))
            tell(Lang::commFileIncorrect().replace(QLatin1String("[#FileName#]"), file));
    });
}

void EditorPanel::tell(const QString &trouble) {
    mTrouble->setText(trouble);
    inkTrouble();
    mTrouble->show();
}

void EditorPanel::AudioTime_UpdateTime(ZQAudioTimeView &view, double seconds) {
    ZQAudioInsertController &inserting = mManager.inserting();
    if (&view == mPosition)
        inserting.setPosition(seconds);
    else
        inserting.setLength(seconds);
    view.setTime(&view == mPosition ? inserting.position() : inserting.length()); // kept within its bounds
}

void EditorPanel::confirm() {
    if (mAsks == Asks::Insert) {
        mPosition->clearTextField();
        mLength->clearTextField();
        if (!mManager.inserting().actionForInsert())
            return tell(Lang::sentence(mManager.inserting().trouble()));
    } else if (mAsks == Asks::Export) {
        if (const foundation::Sentence trouble = mManager.exportAudio(); !trouble.isEmpty())
            return tell(Lang::sentence(trouble));
    } else if (!mConfirm->isHidden())
        mManager.acceptFound();
    else
        return;
    Q_EMIT done();
}

void EditorPanel::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        confirm();
    else
        PagePanel::keyPressEvent(event);
}

void EditorPanel::showTexts() {
    const QString colon = QStringLiteral(":");
    setTitle(mAsks == Asks::Insert   ? insertText(mManager.inserting().type())
             : mAsks == Asks::Export ? Lang::toolsExportTitle()
                                     : withoutDots(Lang::windowBetweenSilences()));
    mFileLabel->setText(Lang::commFileInformation());
    mPositionLabel->setText(Lang::windowPosition());
    mPosition->setAccessibleName(Lang::windowPosition());
    mLengthLabel->setText(Lang::toolsEditorEnterSilenceLength());
    mLength->setAccessibleName(Lang::toolsEditorEnterSilenceLength());
    mFormatLabel->setText(Lang::toolsExportFormat() + colon);
    mFormat->setAccessibleName(Lang::toolsExportFormat());
    mModeLabel->setText(Lang::toolsExportMode() + colon);
    mMode->setAccessibleName(Lang::toolsExportMode());
    mMode->setItemText(0, Lang::toolsEditorExportMerger());
    mMode->setItemText(1, Lang::toolsEditorExportMltiple());
    mParts->showTexts();
    mCoverLabel->setText(Lang::toolsID3TagsArtwork() + colon);
    mAddImage->setText(Lang::btnAdd());
    mAddImage->setAccessibleName(Lang::toolsID3TagsArtwork() + colon + QLatin1Char(' ') + Lang::btnAdd());
    mDeleteImage->setText(Lang::btnDelete());
    mDeleteImage->setAccessibleName(Lang::toolsID3TagsArtwork() + colon + QLatin1Char(' ') + Lang::btnDelete());
    mClear->setText(Lang::btnClear());
    const QString texts[] = {Lang::commTitle(), Lang::toolsExportArtist(), Lang::toolsCDRipperAlbum(),
                             Lang::toolsCDRipperYear(), Lang::toolsCDRipperGenre()};
    for (std::size_t field = 0; field < mTags.size(); ++field) {
        mTagLabels[field]->setText(texts[field] + colon);
        mTags[field]->setAccessibleName(texts[field]);
        lineOf(field)->setAccessibleName(texts[field]);
    }
    mShortestLabel->setText(Lang::windowShortestSilence());
    mShortest->setAccessibleName(Lang::windowShortestSilence());
    mShortest->setLocale(Lang::locale());
    showUnit(*mShortest, Lang::windowSeconds());
    mConfirm->setText(mAsks == Asks::Insert   ? Lang::toolsEditorButtonInsert()
                      : mAsks == Asks::Export ? Lang::toolsExportTitle()
                                              : Lang::btnOK());
    mCancel->setText(Lang::btnCancel());
    if (mAsks == Asks::Insert)
        showInsert();
    else if (mAsks == Asks::Export)
        showExport();
    else
        showSilences();
}

} // namespace cantorel::ui
