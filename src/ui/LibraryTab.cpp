#include "ui/LibraryTab.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "recording/library/RecordedList.h"
#include "settings/UserDefaultFunctions.h"
#include "tags/identify/RecordingIdentification.h"
#include "ui/DetailsPanel.h"
#include "ui/DropPlaces.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/LibraryStrip.h"
#include "ui/LibraryTable.h"
#include "ui/LibraryTools.h"
#include "ui/PlayerBar.h"
#include "ui/look/Look.h"

#include <QBoxLayout>
#include <QEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>
#include <QStackedLayout>
#include <QToolButton>
#include <QUrl>

#include <algorithm>

namespace cantorel::ui {

namespace {

constexpr int kWide = 880;                                 // from here on the details have room beside the list
const QString kDetails = QStringLiteral("libraryDetails"); // whether they are wanted there

// Tools and list lie on the ground of lists.
class Ground : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Look::tokens().surface); }
};

} // namespace

LibraryTab::LibraryTab(RecordedList &list, desktop::MediaControls *media, desktop::FileManagerReveal *files,
                       QWidget *parent)
    : QWidget(parent),
      mList(list),
      mModel(list),
      mRemoval(list),
      mAdding(list),
      mTags(list),
      mMedia(mPlayer, mModel, media),
      mFiles(files),
      mPage(new Ground(this)),
      mTools(new LibraryTools(mPage)),
      mStack(new QStackedLayout),
      mTable(new LibraryTable(mModel, mPlayer, mPage)),
      mEmpty(new QLabel(mPage)),
      mPanel(new DetailsPanel(mTags, this)),
      mStrip(new LibraryStrip(mTags, this)),
      mPlayerBar(new PlayerBar(mPlayer, list, this)) {
    mModel.picture = [this](const RecordedAudioInfo &item) {
        return mPictures.picture(item, mTable->iconSize().width(), devicePixelRatioF());
    };
    mEmpty->setAlignment(Qt::AlignCenter);
    mEmpty->setWordWrap(true);
    mEmpty->setEnabled(false); // A quiet word.
    mStack->addWidget(mTable);
    mStack->addWidget(mEmpty);
    auto *page = new QVBoxLayout(mPage);
    page->setContentsMargins({});
    page->setSpacing(0);
    page->addWidget(mTools);
    page->addLayout(mStack, 1);
    auto *upper = new QHBoxLayout;
    upper->setSpacing(0);
    upper->addWidget(mPage, 1);
    upper->addWidget(mPanel);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addLayout(upper, 1);
    column->addWidget(mStrip);
    column->addWidget(mPlayerBar);
    listen();
    makeKeys();
    arrangeDetails();
    showTexts();
}

void LibraryTab::listen() {
    connect(&mTools->search(), &QLineEdit::textChanged, this, [this](const QString &text) {
        mModel.search(text);
        showEmptiness();
    });
    connect(mTools, &LibraryTools::addWanted, this, [this] { chooseFiles(); });
    connect(mTools, &LibraryTools::editWanted, this, [this] { edit(); });
    connect(mTools, &LibraryTools::convertWanted, this, [this] { convert(); });
    connect(mTools, &LibraryTools::revealWanted, this, [this] { reveal(); });
    connect(mTools, &LibraryTools::detailsWanted, this, [this] { toggleDetails(); });
    connect(mTable, &LibraryTable::customContextMenuRequested, this, [this](const QPoint &at) { showMenu(at); });
    connect(mTable, &LibraryTable::playWanted, this, &LibraryTab::play);
    connect(mTable, &LibraryTable::choiceChanged, this, [this] { showChoice(); });
    connect(mPlayerBar, &PlayerBar::playWanted, this, &LibraryTab::play);
    connect(mPlayerBar, &PlayerBar::clicked, mTable, [this] { mTable->setFocus(); });
    connect(&mModel, &RecordingsModel::renameFailed, this, [this](const auto &why) { mStrip->report(why); });
    connect(&mModel, &QAbstractItemModel::dataChanged, this, [this] { showDetails(); });
    connect(&mTags, &ID3EditWindowController::changed, this, [this] { showDetails(); });
    connect(&mPictures, &CoverPictures::changed, this, [this] {
        mTable->viewport()->update();
        showDetails();
    });
    auto *places = new DropPlaces(*this, *mPage, *mTable); // owned by the tab
    places->setObjectName(QStringLiteral("dropPlaces"));
    connect(places, &DropPlaces::convertWanted, this, &LibraryTab::convertWanted);
    connect(places, &DropPlaces::editWanted, this, &LibraryTab::editWanted);
    connect(places, &DropPlaces::addWanted, this, &LibraryTab::add);
    connect(&mPanel->back(), &QToolButton::clicked, this, [this] { toggleDetails(); });
}

void LibraryTab::makeKeys() {
    const auto onPage = [this](const QKeySequence &keys, auto action) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    onPage(QKeySequence::Find, [this] { mTools->search().setFocus(Qt::ShortcutFocusReason); });
    onPage(Qt::CTRL | Qt::Key_I, [this] { toggleDetails(); });
    onPage(Qt::CTRL | Qt::Key_E, [this] { edit(); });
    onPage(Qt::CTRL | Qt::SHIFT | Qt::Key_C, [this] { convert(); });
    onPage(QKeySequence::Open, [this] { chooseFiles(); });
    onPage(QKeySequence::Undo, [this] { mStrip->undo(); });
}

void LibraryTab::showMenu(const QPoint &position) {
    const auto items = mTable->selected();
    if (items.empty())
        return;
    QMenu menu(this);
    const auto add = [&](const char *drawing, const QString &text, auto action, bool enabled = true) {
        QAction *added = menu.addAction(icon(QString::fromLatin1(drawing), palette()), text, this, action);
        added->setEnabled(enabled);
    };
    const bool isOne = items.size() == 1;
    const bool isReady = !items.front()->isInUse();
    add(
        "play", Lang::btnPlay(), [this, file = items.front()->getFileName()] { play(file); }, isOne && isReady);
    add(
        "rename", Lang::btnRename(), [this] { mTable->renameChosen(); }, isOne && isReady);
    add(
        "edit", Lang::btnEdit(), [this] { edit(); }, isOne && isReady);
    add("convert", Lang::windowConvertFiles(), [this] { convert(); });
    if (mIdentification)
        add(
            "wave", Lang::btnIdentifyID3(), [this] { onIdentifyID3tagsRecordedItem(); },
            isReady && !isMovieFile(items.front()->getFileName()));
    add(
        "folder", Lang::btnShowInFinder(), [this] { reveal(); }, isOne);
    if (mDetails == Details::Closed)
        add(
            "tag", Lang::commFileInformation(), [this] { toggleDetails(); }, isOne);
    menu.addSeparator();
    add("remove", Lang::windowRemoveFromList(), [this] { remove(RecordingsRemoval::Files::Stay); });
    add("wastebasket", Lang::windowMoveToWastebasket(), [this] { remove(RecordingsRemoval::Files::IntoWastebasket); });
    menu.exec(mTable->viewport()->mapToGlobal(position));
}

// By its name: the item may have gone while a menu or a question stood there.
void LibraryTab::play(const QString &file) {
    const RecordedAudioInfo *item = mList.itemWithFile(file);
    if (!item || item->isInUse())
        return;
    if (!QFileInfo::exists(file))
        mStrip->report(kFileGone(file));
    else if (mConsent.isWanted())
        Q_EMIT playsIntoRecording(file);
    else if (isMovieFile(file))
        watch(file);
    else if (const auto played = mPlayer.play(file); !played)
        mStrip->report(played.failure().sentence);
    else
        mStrip->clear();
}

void LibraryTab::choose(const QString &file) {
    if (const RecordedAudioInfo *item = mList.itemWithFile(file))
        mTable->selectRow(mModel.rowOf(item)); // nothing where a search leaves it out
}

// Pictures are shown by the desktop's own player.
void LibraryTab::watch(const QString &file) {
    if (!mFiles)
        return;
    if (const auto opened = mFiles->open(QUrl::fromLocalFile(file)); !opened)
        mStrip->report(opened.failure().sentence);
}

void LibraryTab::setRecordsSystemSound(bool records) { mConsent.setRecordsSystemSound(records); }

void LibraryTab::playAllTheSame(const QString &file) {
    mConsent.give();
    play(file);
}

void LibraryTab::begin() { mTable->setFocus(Qt::OtherFocusReason); }

void LibraryTab::reveal() {
    const auto items = mTable->selected();
    if (!items.empty() && mFiles != nullptr)
        (void)mFiles->reveal({items.front()->getFileName()}); // The desktop shows it or has no file manager.
}

void LibraryTab::convert() {
    QStringList files;
    for (const RecordedAudioInfo *item : mTable->selected())
        if (!item->isInUse())
            files << item->getFileName();
    if (!files.isEmpty())
        Q_EMIT convertWanted(files);
}

void LibraryTab::edit() {
    if (const RecordedAudioInfo *item = mTable->chosen(); item && !item->isInUse())
        Q_EMIT editWanted(item->getFileName());
}

void LibraryTab::takeStrip(QWidget &strip) {
    auto *column = static_cast<QBoxLayout *>(layout());
    column->insertWidget(column->indexOf(mPlayerBar), &strip);
}

bool LibraryTab::isWide() const { return width() >= Look::scaled(*this, kWide); }

void LibraryTab::toggleDetails() {
    const bool opens = mDetails == Details::Closed;
    (void)ZQUserDefaultSetValue_BOOL(opens, kDetails); // A failure is logged by the store.
    mDetails = !opens ? Details::Closed : isWide() ? Details::Beside : Details::Covering;
    arrangeDetails();
    if (mDetails == Details::Covering)
        mPanel->back().setFocus();
    else if (!opens)
        mTable->setFocus();
}

// A window that becomes narrow shows the list, and the panel again once it is wide.
void LibraryTab::arrangeDetails() {
    if (isWide())
        mDetails = ZQUserDefaultGetBoolValue(kDetails, false) ? Details::Beside : Details::Closed;
    else if (mDetails == Details::Beside)
        mDetails = Details::Closed;
    const bool covers = mDetails == Details::Covering;
    mPage->setVisible(!covers);
    mPanel->setVisible(mDetails != Details::Closed);
    mPanel->setCovering(covers);
    mPanel->setMinimumWidth(mPanel->besideWidth());
    mPanel->setMaximumWidth(covers ? QWIDGETSIZE_MAX : mPanel->besideWidth());
    mTools->setDetailsShown(mDetails != Details::Closed);
    showDetails();
    if (isVisible()) // What dates look like is learnt when they are looked at.
        mTable->fitColumns(listWidth());
    mTools->fit(listWidth());
}

void LibraryTab::showDetails() {
    if (mDetails == Details::Closed)
        return;
    const auto items = mTable->selected();
    QStringList files;
    if (std::none_of(items.begin(), items.end(), [](const auto *item) { return item->isInUse(); }))
        for (const RecordedAudioInfo *item : items)
            files << item->getFileName();
    mTags.edit(files);
    const RecordedAudioInfo *item = mTable->chosen();
    if (!item)
        return mPanel->show(nullptr, 0, {}, {});
    const int side = mPanel->coverSide();
    const bool isEdited = mTags.isImageTouched() || items.size() > 1;
    const QIcon cover = isEdited ? mPictures.picture(mTags.image(), side, devicePixelRatioF())
                                 : mPictures.picture(*item, side, devicePixelRatioF());
    mPanel->show(item, static_cast<qsizetype>(items.size()), cover.pixmap(side, side),
                 mModel.fullDate(item->dateAdded()));
}

void LibraryTab::showChoice() {
    showDetails();
    const RecordedAudioInfo *item = mTable->chosen();
    mPlayerBar->choose(item && !item->isInUse() ? item->getFileName() : QString());
    mTools->showReveal(mFiles && item);
    mTools->showConvert(item);
    mTools->showEdit(item && !item->isInUse());
    mTools->fit(listWidth());
}

int LibraryTab::listWidth() const { return width() - (mDetails == Details::Beside ? mPanel->besideWidth() : 0); }

// Whether there was something to leave.
bool LibraryTab::escape() {
    QLineEdit &search = mTools->search();
    if (mDetails != Details::Closed && !search.hasFocus())
        toggleDetails();
    else if (!search.text().isEmpty()) {
        search.clear();
        mTable->setFocus();
    } else if (mDetails != Details::Closed)
        toggleDetails();
    else
        return false;
    return true;
}

void LibraryTab::remove(RecordingsRemoval::Files files) {
    const auto items = mTable->selected();
    if (items.empty())
        return;
    for (const auto *item : items)
        if (item->getFileName() == mPlayer.file())
            mPlayer.stop();
    mStrip->reportRemoved(mRemoval, mRemoval.remove(items, files));
}

void LibraryTab::chooseFiles() {
    ui::chooseFiles(*this, Lang::windowSoundFiles(), [this](const QStringList &files) { add(files); });
}

void LibraryTab::add(const QStringList &paths) {
    mAdding.add(paths, [this](const RecordingsAdding::Added &added) { mStrip->reportAdded(mAdding, added); });
}

void LibraryTab::setIdentification(RecordingIdentification &identification) {
    mIdentification = &identification;
    mStrip->setIdentification(identification);
    connect(&mPanel->addIdentify(), &QPushButton::clicked, this, [this] { onIdentifyID3tagsRecordedItem(); });
}

// Those whose files are there, one after the other.
void LibraryTab::onIdentifyID3tagsRecordedItem() {
    for (const RecordedAudioInfo *item : mTable->selected()) {
        const QString file = item->getFileName();
        if (QFileInfo(file).isFile()) {
            Log(QStringLiteral("* identify file:%1").arg(file));
            mIdentification->identifyID3TagsFromFile(file);
        } else {
            mStrip->report(Strip::Kind::Error, Lang::tabPlaylistNoFile(), {});
        }
    }
}

void LibraryTab::listDidChange() {
    mModel.listDidChange();
    showEmptiness();
}

void LibraryTab::showEmptiness() {
    const bool isEmpty = mModel.rowCount() == 0;
    mEmpty->setText(mList.isLoading()       ? QString()
                    : mList.items().empty() ? Lang::windowEmptyLibrary() + QLatin1Char('\n') + Lang::windowDropHere()
                                            : Lang::windowNothingFound());
    mStack->setCurrentIndex(isEmpty ? 1 : 0);
}

void LibraryTab::showTexts() {
    mTable->setAccessibleName(Lang::tabPlaylistTitle());
    mPanel->changeLanguageText();
    mPanel->back().setToolTip(Lang::tabPlaylistTitle());
    mPanel->back().setAccessibleName(Lang::tabPlaylistTitle());
    mModel.languageDidChange();
    arrangeDetails();
    showEmptiness();
}

// So that keys of the window do not come before what Escape leaves here.
bool LibraryTab::event(QEvent *event) {
    const auto *key = event->type() == QEvent::ShortcutOverride ? static_cast<QKeyEvent *>(event) : nullptr;
    if (key && key->key() == Qt::Key_Escape && (mDetails != Details::Closed || !mTools->search().text().isEmpty()))
        event->accept();
    return QWidget::event(event);
}

// What neither the list nor a field has a use for.
void LibraryTab::keyPressEvent(QKeyEvent *event) {
    const bool isPlain = !(event->modifiers() & ~(Qt::KeypadModifier));
    const bool isShifted = event->modifiers() == Qt::ShiftModifier;
    const RecordedAudioInfo *item = mTable->chosen();
    switch (event->key()) {
    case Qt::Key_Escape:
        if (escape())
            return;
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
        if (isPlain && mTools->search().hasFocus())
            return mTable->setFocus(Qt::OtherFocusReason);
        if (isPlain && item && event->key() != Qt::Key_Down)
            return play(item->getFileName());
        break;
    case Qt::Key_Space:
        if (isPlain)
            return mPlayerBar->playOrPause();
        break;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (isPlain)
            return mPlayerBar->step(event->key() == Qt::Key_Left ? -1 : 1);
        break;
    case Qt::Key_F2:
        if (isPlain)
            return mTable->renameChosen();
        break;
    case Qt::Key_Delete:
        if (isPlain || isShifted)
            return remove(isShifted ? RecordingsRemoval::Files::IntoWastebasket : RecordingsRemoval::Files::Stay);
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

void LibraryTab::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    arrangeDetails();
}

void LibraryTab::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    arrangeDetails();
}

void LibraryTab::changeEvent(QEvent *event) {
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
