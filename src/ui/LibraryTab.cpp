#include "ui/LibraryTab.h"

#include "lang/Lang.h"
#include "log/Log.h"
#include "recording/library/RecordedList.h"
#include "settings/UserDefaultFunctions.h"
#include "tags/identify/RecordingIdentification.h"
#include "ui/Deck.h"
#include "ui/DetailsPanel.h"
#include "ui/DropPlaces.h"
#include "ui/FileDialogs.h"
#include "ui/Icons.h"
#include "ui/PageParts.h"
#include "ui/PlayerBar.h"
#include "ui/RecordingsTable.h"
#include "ui/RowDelegate.h"
#include "ui/Strip.h"
#include "ui/look/Look.h"

#include <QAction>
#include <QBoxLayout>
#include <QDateTime>
#include <QEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QStackedLayout>
#include <QToolButton>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace cantorel::ui {

namespace {

constexpr int kSearch = 240, kCover = 40, kTools = 56;
constexpr int kLeastTitle = 200;
constexpr int kWide = 880;                                 // from here on the details have room beside the list
const QString kDetails = QStringLiteral("libraryDetails"); // whether they are wanted there

// Tools and list lie on the ground of lists.
class Page : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), Look::tokens().surface); }
};

// Clicks leave the focus where it is, so that the keys of the list go on working.
QToolButton *flatButton(QWidget *parent, const char *name) {
    auto *button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setObjectName(QString::fromLatin1(name));
    return button;
}

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
      mSearch(new QLineEdit(this)),
      mGlass(mSearch->addAction(QIcon(), QLineEdit::LeadingPosition)),
      mClearSearch(mSearch->addAction(QIcon(), QLineEdit::TrailingPosition)),
      mTable(new RecordingsTable(this)),
      mEmpty(new QLabel(this)),
      mPlayerBar(new PlayerBar(mPlayer, list, this)),
      mAdd(flatButton(this, "add")),
      mEdit(flatButton(this, "editSelected")),
      mConvert(flatButton(this, "convertSelected")),
      mReveal(flatButton(this, "reveal")),
      mToggle(flatButton(this, "showDetails")) {
    mSearch->setObjectName(QStringLiteral("search"));
    mSearch->setAcceptDrops(false); // Files may be dropped here as well.
    // Qt's own button to clear it has all readers of pictures loaded.
    mClearSearch->setVisible(false);
    connect(mClearSearch, &QAction::triggered, mSearch, &QLineEdit::clear);
    connect(mSearch, &QLineEdit::textChanged, this, [this](const QString &text) {
        mClearSearch->setVisible(!text.isEmpty());
        mModel.search(text);
        showEmptiness();
    });
    connect(&mModel, &RecordingsModel::renameFailed, this, [this](const auto &why) { notice(why); });
    mModel.picture = [this](const RecordedAudioInfo &item) {
        return mPictures.picture(item, mTable->iconSize().width(), devicePixelRatioF());
    };
    connect(&mPictures, &CoverPictures::changed, this, [this] {
        mTable->viewport()->update();
        showDetails();
    });
    connect(&mPlayer, &LibraryPlayer::changed, mTable, [this] { mTable->viewport()->update(); });
    connect(mPlayerBar, &PlayerBar::playWanted, this, [this](const QString &file) { play(file); });
    connect(mPlayerBar, &PlayerBar::clicked, mTable, [this] { mTable->setFocus(); });

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    mPage = new Page(this);
    mPanel = new DetailsPanel(mTags, this);
    auto *upper = new QHBoxLayout;
    upper->setSpacing(0);
    upper->addWidget(mPage, 1);
    upper->addWidget(mPanel);
    column->addLayout(upper, 1);
    column->addWidget(makeNotice());
    column->addWidget(mPlayerBar);
    auto *page = new QVBoxLayout(mPage);
    page->setContentsMargins({});
    page->setSpacing(0);
    page->addWidget(makeTools());
    auto *stacked = new QWidget(this);
    mStack = new QStackedLayout(stacked);
    mStack->addWidget(makeTable());
    mEmpty->setAlignment(Qt::AlignCenter);
    mEmpty->setWordWrap(true);
    mEmpty->setEnabled(false); // A quiet word.
    mStack->addWidget(mEmpty);
    page->addWidget(stacked, 1);
    auto *places = new DropPlaces(*this, *mPage, *mTable); // owned by the tab
    connect(places, &DropPlaces::convertWanted, this, &LibraryTab::convertWanted);
    connect(places, &DropPlaces::editWanted, this, &LibraryTab::editWanted);
    connect(places, &DropPlaces::addWanted, this, &LibraryTab::add);
    connect(&mPanel->back(), &QToolButton::clicked, this, [this] { toggleDetails(); });
    connect(mTable->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] { showChoice(); });
    connect(mTable->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] { showChoice(); });
    connect(&mModel, &QAbstractItemModel::dataChanged, this, [this] { showDetails(); });
    connect(&mTags, &ID3EditWindowController::changed, this, [this] { showDetails(); });
    connect(&mTags, &ID3EditWindowController::failed, this, [this](const auto &why) { notice(why); });
    connect(&mTags, &ID3EditWindowController::left, this, [this](const auto &unsaved) {
        mLeft.push_back(unsaved);
        notice({});
    });
    connect(&mTags, &ID3EditWindowController::written, this,
            [this](const auto &written, const auto &unsaved) { tellWritten(written, unsaved); });
    arrangeDetails();
    showIcons();
    showTexts();
}

QWidget *LibraryTab::makeTools() {
    mTools = new QWidget(this);
    mTools->setMinimumHeight(Look::tall(*this, kTools));
    auto *row = new QHBoxLayout(mTools);
    row->setContentsMargins(measure::kMargin, measure::kGap, measure::kMargin, measure::kGap);
    mSearch->setMaximumWidth(Look::scaled(*this, kSearch));
    mToggle->setCheckable(true);
    for (QToolButton *button : {mEdit, mConvert, mReveal})
        button->hide();
    connect(mEdit, &QToolButton::clicked, this, [this] { edit(); });
    connect(mConvert, &QToolButton::clicked, this, [this] { convert(); });
    connect(mReveal, &QToolButton::clicked, this, [this] { reveal(); });
    connect(mToggle, &QToolButton::clicked, this, [this] { toggleDetails(); });
    connect(mAdd, &QToolButton::clicked, this, [this] { chooseFiles(); });
    row->addWidget(mSearch, 3);
    row->addSpacing(measure::kGap);
    row->addWidget(mAdd);
    row->addWidget(mEdit);
    row->addWidget(mConvert);
    row->addWidget(mReveal);
    row->addStretch(1);
    row->addWidget(mToggle);
    return mTools;
}

QWidget *LibraryTab::makeTable() {
    mTable->setModel(&mModel);
    mTable->setTileColumn(RecordingsModel::Cover);
    // Behind what the view itself does with its selection.
    connect(&mModel, &QAbstractItemModel::modelAboutToBeReset, this, [this] { remember(); });
    connect(&mModel, &QAbstractItemModel::modelReset, this, [this] { restore(); });
    auto *delegate = new RowDelegate(mModel, mTable);
    delegate->isHovered = [this](int row) { return row == mTable->hoveredRow(); };
    delegate->tile = [this](int row) {
        const RecordedAudioInfo *item = mModel.item(row);
        if (!item || item->isInUse())
            return RowDelegate::Tile::Plain;
        if (mPlayer.isPlaying() && item->getFileName() == mPlayer.file())
            return RowDelegate::Tile::Pause;
        return row == mTable->hoveredRow() ? RowDelegate::Tile::Play : RowDelegate::Tile::Plain;
    };
    mTable->setItemDelegate(delegate);
    mTable->verticalHeader()->setDefaultSectionSize(Look::scaled(*this, measure::kRow));
    mTable->horizontalHeader()->setSectionResizeMode(RecordingsModel::Title, QHeaderView::Stretch);
    mTable->horizontalHeader()->setHighlightSections(false);
    mTable->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    mTable->horizontalHeader()->setMinimumHeight(Look::tall(*this, measure::kTarget));
    mTable->horizontalHeader()->setMinimumSectionSize(1);
    // The cover is seen first, while the title stays the first cell that the keys come to.
    mTable->horizontalHeader()->moveSection(RecordingsModel::Cover, 0);
    mTable->horizontalHeader()->setSectionResizeMode(RecordingsModel::Cover, QHeaderView::Fixed);
    mTable->setIconSize(QSize(1, 1) * Look::scaled(*this, kCover));
    mTable->setColumnWidth(RecordingsModel::Cover, measure::kMargin + mTable->iconSize().width() + measure::kGap);
    // What these say stands in the second line of the title.
    for (const auto said : {RecordingsModel::Artist, RecordingsModel::Album, RecordingsModel::State})
        mTable->setColumnHidden(said, true);
    mTable->setSortingEnabled(true);
    mTable->sortByColumn(RecordingsModel::Date, Qt::DescendingOrder);
    connect(mTable, &RecordingsTable::customContextMenuRequested, this, [this](const QPoint &at) { showMenu(at); });
    connect(mTable, &RecordingsTable::tileClicked, this, [this](int row) { playTile(row); });
    connect(mTable, &RecordingsTable::doubleClicked, this, [this](const QModelIndex &index) {
        if (const auto *item = mModel.item(index.row()))
            play(item->getFileName());
    });
    const auto onPage = [this](const QKeySequence &keys, auto action) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    onPage(QKeySequence::Find, [this] { mSearch->setFocus(Qt::ShortcutFocusReason); });
    onPage(Qt::CTRL | Qt::Key_I, [this] { toggleDetails(); });
    onPage(Qt::CTRL | Qt::Key_E, [this] { edit(); });
    onPage(Qt::CTRL | Qt::SHIFT | Qt::Key_C, [this] { convert(); });
    onPage(QKeySequence::Open, [this] { chooseFiles(); });
    onPage(QKeySequence::Undo, [this] { undo(); });
    return mTable;
}

QWidget *LibraryTab::makeNotice() {
    mNotice = new Strip(this);
    mNotice->text().setObjectName(QStringLiteral("notice"));
    mUndo = &mNotice->addAction(QStringLiteral("undo"), false);
    connect(mUndo, &QPushButton::clicked, this, [this] { undo(); });
    mUse = &mNotice->addAction(QStringLiteral("useProposal"), false);
    connect(mUse, &QPushButton::clicked, this, [this] {
        const auto use = std::exchange(mUseProposal, {});
        notice({});
        use();
    });
    mAgree = &mNotice->addAction(QStringLiteral("agreeToIdentify"), false);
    connect(mAgree, &QPushButton::clicked, this, [this] {
        notice({});
        mIdentification->agree();
    });
    mSave = &mNotice->addAction(QStringLiteral("saveLeftTags"), false);
    connect(mSave, &QPushButton::clicked, this, [this] {
        for (const auto &unsaved : std::exchange(mLeft, {}))
            mTags.save(unsaved);
        notice({});
    });
    connect(mNotice, &Strip::closed, this, [this] {
        if (!mAgree->isHidden())
            mIdentification->notNow();
        mLeft.clear();
        notice({});
    });
    return mNotice;
}

std::vector<RecordedAudioInfo *> LibraryTab::selected() const {
    std::vector<RecordedAudioInfo *> items;
    for (const QModelIndex &index : mTable->selectionModel()->selectedRows())
        if (auto *item = mModel.item(index.row()))
            items.push_back(item);
    return items;
}

void LibraryTab::showMenu(const QPoint &position) {
    const auto items = selected();
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
        "rename", Lang::btnRename(), [this] { rename(); }, isOne && isReady);
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

void LibraryTab::playTile(int row) {
    const RecordedAudioInfo *item = mModel.item(row);
    if (item && mPlayer.isPlaying() && item->getFileName() == mPlayer.file())
        mPlayer.pause();
    else if (item)
        play(item->getFileName());
}

void LibraryTab::rename() {
    if (const RecordedAudioInfo *item = chosen(); item && !item->isInUse())
        mTable->edit(mModel.index(mModel.rowOf(item), RecordingsModel::Title));
}

// By its name: the item may have gone while a menu or a question stood there.
void LibraryTab::play(const QString &file) {
    const RecordedAudioInfo *item = mList.itemWithFile(file);
    if (!item || item->isInUse())
        return;
    if (!QFileInfo::exists(file))
        notice(kFileGone(file));
    else if (mConsent.isWanted())
        Q_EMIT playsIntoRecording(file);
    else if (isMovieFile(file))
        watch(file);
    else if (const auto played = mPlayer.play(file); !played)
        notice(played.failure().sentence);
    else if (!mUndoes)
        notice({});
}

// Pictures are shown by the desktop's own player.
void LibraryTab::watch(const QString &file) {
    if (!mFiles)
        return;
    if (const auto opened = mFiles->open(QUrl::fromLocalFile(file)); !opened)
        notice(opened.failure().sentence);
}

void LibraryTab::setRecordsSystemSound(bool records) { mConsent.setRecordsSystemSound(records); }

void LibraryTab::playAllTheSame(const QString &file) {
    mConsent.give();
    play(file);
}

void LibraryTab::begin() { mTable->setFocus(Qt::OtherFocusReason); }

void LibraryTab::reveal() {
    const auto items = selected();
    if (!items.empty() && mFiles != nullptr)
        (void)mFiles->reveal({items.front()->getFileName()}); // The desktop shows it or has no file manager.
}

void LibraryTab::convert() {
    QStringList files;
    for (const RecordedAudioInfo *item : selected())
        if (!item->isInUse())
            files << item->getFileName();
    if (!files.isEmpty())
        Q_EMIT convertWanted(files);
}

void LibraryTab::edit() {
    if (const RecordedAudioInfo *item = chosen(); item && !item->isInUse())
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
    mToggle->setChecked(mDetails != Details::Closed);
    showDetails();
    fitColumns();
    fitTools();
}

// Of several that are selected the one that the keys stand on.
RecordedAudioInfo *LibraryTab::chosen() const {
    const QItemSelectionModel &selection = *mTable->selectionModel();
    if (!selection.hasSelection())
        return nullptr;
    const int current = mTable->currentIndex().row();
    return mModel.item(selection.isRowSelected(current) ? current : selection.selection().first().top());
}

void LibraryTab::showDetails() {
    if (mDetails == Details::Closed)
        return;
    const auto items = selected();
    QStringList files;
    if (std::none_of(items.begin(), items.end(), [](const auto *item) { return item->isInUse(); }))
        for (const RecordedAudioInfo *item : items)
            files << item->getFileName();
    mTags.edit(files);
    const RecordedAudioInfo *item = chosen();
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
    const RecordedAudioInfo *item = chosen();
    mPlayerBar->choose(item && !item->isInUse() ? item->getFileName() : QString());
    mReveal->setVisible(mFiles != nullptr && mTable->selectionModel()->hasSelection());
    mConvert->setVisible(mTable->selectionModel()->hasSelection());
    mEdit->setVisible(item && !item->isInUse());
    fitTools();
}

int LibraryTab::listWidth() const { return width() - (mDetails == Details::Beside ? mPanel->besideWidth() : 0); }

// In a narrow window the tools are their icons.
void LibraryTab::fitTools() {
    for (const auto style : {Qt::ToolButtonTextBesideIcon, Qt::ToolButtonIconOnly}) {
        for (QToolButton *tool : {mAdd, mEdit, mConvert, mReveal})
            tool->setToolButtonStyle(style);
        if (mTools->sizeHint().width() <= listWidth())
            return;
    }
}

// Whether there was something to leave.
bool LibraryTab::escape() {
    if (mDetails != Details::Closed && !mSearch->hasFocus())
        toggleDetails();
    else if (!mSearch->text().isEmpty()) {
        mSearch->clear();
        mTable->setFocus();
    } else if (mDetails != Details::Closed)
        toggleDetails();
    else
        return false;
    return true;
}

void LibraryTab::remove(RecordingsRemoval::Files files) {
    const auto items = selected();
    if (items.empty())
        return;
    for (const auto *item : items)
        if (item->getFileName() == mPlayer.file())
            mPlayer.stop();
    const auto removed = mRemoval.remove(items, files);
    const auto putBack = [this] {
        if (const auto undone = mRemoval.undo(); !undone)
            notice(undone.failure().sentence);
    };
    if (mRemoval.count() > 0) {
        const bool isOne = mRemoval.count() == 1, moved = mRemoval.hasMovedFiles();
        const auto count = static_cast<qint64>(mRemoval.count());
        QString text = isOne ? (moved ? Lang::windowMovedToWastebasket() : Lang::windowRemoved())
                             : (moved ? Lang::windowSeveralMoved(count) : Lang::windowSeveralRemoved(count));
        text.replace(QLatin1String("[#FileName#]"), mRemoval.firstName());
        tell(Strip::Kind::Result, text, putBack);
    }
    if (!removed)
        tell(Strip::Kind::Error, Lang::sentence(removed.failure().sentence), std::exchange(mUndoes, {}));
}

void LibraryTab::chooseFiles() {
    ui::chooseFiles(*this, Lang::windowSoundFiles(), [this](const QStringList &files) { add(files); });
}

void LibraryTab::add(const QStringList &paths) {
    mAdding.add(paths, [this](const RecordingsAdding::Added &added) { showAdded(added); });
}

void LibraryTab::showAdded(const RecordingsAdding::Added &added) {
    const auto count = added.files.size();
    const auto takeOut = [this] { mAdding.undo(); };
    QString text = count == 0   ? Lang::windowAlreadyListed()
                   : count == 1 ? Lang::windowAdded()
                                : Lang::windowSeveralAdded(count);
    text.replace(QLatin1String("[#FileName#]"), QFileInfo(added.files.value(0)).fileName());
    if (!added.trouble.isEmpty())
        tell(Strip::Kind::Error, Lang::sentence(added.trouble), count > 0 ? std::function<void()>(takeOut) : nullptr);
    else if (count == 0)
        tell(Strip::Kind::Hint, text, {});
    else
        tell(Strip::Kind::Result, text, takeOut);
}

void LibraryTab::tellWritten(const TagsWritten &written, const ID3EditWindowController::Unsaved &unsaved) {
    if (!unsaved.files.isEmpty())
        mLeft.push_back(unsaved);
    std::function<void()> undo;
    if (!written.undo.files.empty())
        undo = [this, before = written.undo] { mTags.undo(before); };
    if (written.failures.empty())
        tell(Strip::Kind::Result, Lang::toolsID3TagsSuccess(), std::move(undo));
    else
        tell(Strip::Kind::Error,
             Lang::windowTagsFailed() + QLatin1Char(' ') + Lang::sentence(written.failures.front().failure.sentence),
             std::move(undo));
}

void LibraryTab::setIdentification(RecordingIdentification &identification) {
    mIdentification = &identification;
    const auto named = [](QString text, const RecognisedMusic &music) {
        return text.replace(QLatin1String("[#Title#]"), music.Title())
            .replace(QLatin1String("[#Artist#]"), music.Artist());
    };
    connect(mIdentification, &RecordingIdentification::identified, this, [this, named](const auto &identified) {
        tell(Strip::Kind::Result, named(Lang::windowIdentified(), identified.music),
             [this, identified] { mIdentification->undo(identified); });
    });
    connect(mIdentification, &RecordingIdentification::proposed, this,
            [this, named](const QString &file, const RecognisedMusic &music) {
                tell(Strip::Kind::Hint, named(Lang::windowProposed(), music), {});
                mUseProposal = [this, file, music] { mIdentification->use(file, music); };
                mUse->show();
            });
    connect(mIdentification, &RecordingIdentification::notIdentified, this,
            [this](const QString &, const foundation::Sentence &why) {
                if (why.isEmpty())
                    tell(Strip::Kind::Hint, Lang::windowNotIdentified(), {});
                else
                    notice(why);
            });
    connect(mIdentification, &RecordingIdentification::agreementWanted, this, [this] {
        tell(Strip::Kind::Hint, Lang::windowIdentifySends(), {});
        mAgree->show();
    });
    connect(&mPanel->addIdentify(), &QPushButton::clicked, this, [this] { onIdentifyID3tagsRecordedItem(); });
}

// Those whose files are there, one after the other.
void LibraryTab::onIdentifyID3tagsRecordedItem() {
    for (const RecordedAudioInfo *item : selected()) {
        const QString file = item->getFileName();
        if (QFileInfo(file).isFile()) {
            Log(QStringLiteral("* identify file:%1").arg(file));
            mIdentification->identifyID3TagsFromFile(file);
        } else {
            tell(Strip::Kind::Error, Lang::tabPlaylistNoFile(), {});
        }
    }
}

void LibraryTab::undo() {
    if (const auto undo = std::exchange(mUndoes, {})) {
        notice({});
        undo();
    }
}

void LibraryTab::tell(Strip::Kind kind, const QString &text, std::function<void()> undo) {
    mUndoes = std::move(undo);
    mUseProposal = {};
    mUse->hide();
    mAgree->hide();
    mUndo->setVisible(bool(mUndoes));
    mSave->setVisible(!mLeft.empty());
    const bool isRest = text.isEmpty() && !mLeft.empty(); // It is told again once other news are over.
    mNotice->tell(isRest ? Strip::Kind::Warning : kind, isRest ? Lang::windowTagsLeft() : text);
}

void LibraryTab::notice(const foundation::Sentence &trouble) { tell(Strip::Kind::Error, Lang::sentence(trouble), {}); }

void LibraryTab::listDidChange() {
    mModel.listDidChange();
    showEmptiness();
}

void LibraryTab::remember() {
    mBefore = {};
    for (const QItemSelectionRange &range : mTable->selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            mBefore.selected.insert(mModel.item(row));
    mBefore.current = mModel.item(mTable->currentIndex().row());
    mBefore.column = qMax(0, mTable->currentIndex().column());
    if (mTable->verticalScrollBar()->value() > 0) // At its top, a table shows what comes there.
        mBefore.top = mModel.item(mTable->rowAt(0));
}

void LibraryTab::restore() {
    if (mBefore.selected.empty() && !mBefore.current && !mBefore.top) {
        showChoice();
        return;
    }
    QItemSelection selection;
    int current = -1, top = -1, first = -1;
    for (int row = 0; row <= mModel.rowCount(); ++row) {
        const RecordedAudioInfo *item = mModel.item(row); // null behind the last
        current = item && item == mBefore.current ? row : current;
        top = item && item == mBefore.top ? row : top;
        const bool isSelected = item && mBefore.selected.contains(item);
        if (isSelected && first < 0)
            first = row;
        if (!isSelected && first >= 0) {
            selection.append(
                QItemSelectionRange(mModel.index(first, 0), mModel.index(row - 1, RecordingsModel::ColumnCount - 1)));
            first = -1;
        }
    }
    QItemSelectionModel &selected = *mTable->selectionModel();
    selected.select(selection, QItemSelectionModel::ClearAndSelect);
    if (current >= 0)
        selected.setCurrentIndex(mModel.index(current, mBefore.column), QItemSelectionModel::NoUpdate);
    if (top >= 0)
        mTable->verticalScrollBar()->setValue(top * mTable->verticalHeader()->defaultSectionSize());
    mBefore = {};
    showChoice();
}

QString LibraryTab::longestDate() const {
    const QDateTime today(QDate::currentDate(), QTime(22, 58));
    QString longest;
    for (const QDateTime &date : {today, today.addDays(-1), QDateTime(QDate(2028, 12, 28), today.time())})
        if (const QString text = mModel.shownDate(date.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
            fontMetrics().horizontalAdvance(text) > fontMetrics().horizontalAdvance(longest))
            longest = text;
    return longest;
}

// As wide as what they show at most, and as their names with the sign of the order. Where a title would lack room, the
// size goes first, then the date, which the second line takes.
void LibraryTab::fitColumns() {
    if (!isVisible())
        return; // What dates look like is learnt when they are looked at.
    const std::pair<RecordingsModel::Column, QString> texts[] = {{RecordingsModel::Length, QStringLiteral("00:00:00")},
                                                                 {RecordingsModel::Date, longestDate()},
                                                                 {RecordingsModel::Size, QStringLiteral("888.88 MB")}};
    const QFontMetrics metrics = fontMetrics();
    const int air = 3 * measure::kGap;
    int room = listWidth() - mTable->columnWidth(RecordingsModel::Cover) - Look::scaled(*this, kLeastTitle);
    for (const auto &[column, text] : texts) {
        const QString name = mModel.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        const int width = air + qMax(metrics.horizontalAdvance(text), metrics.horizontalAdvance(name) + air);
        mTable->setColumnWidth(column, width);
        mTable->setColumnHidden(column, room < width);
        room -= width;
    }
}

void LibraryTab::showEmptiness() {
    const bool isEmpty = mModel.rowCount() == 0;
    mEmpty->setText(mList.isLoading()       ? QString()
                    : mList.items().empty() ? Lang::windowEmptyLibrary() + QLatin1Char('\n') + Lang::windowDropHere()
                                            : Lang::windowNothingFound());
    mStack->setCurrentIndex(isEmpty ? 1 : 0);
}

void LibraryTab::showTexts() {
    mSearch->setPlaceholderText(Lang::windowSearchRecordings());
    mSearch->setAccessibleName(Lang::windowSearchRecordings());
    mClearSearch->setText(Lang::btnClear());
    mTable->setAccessibleName(Lang::tabPlaylistTitle());
    mUndo->setText(Lang::windowUndo());
    mSave->setText(Lang::btnSave());
    mUse->setText(Lang::windowUseProposal());
    mAgree->setText(Lang::btnIdentifyID3());
    mPanel->changeLanguageText();
    mAdd->setText(Lang::windowAddFiles());
    mAdd->setToolTip(Lang::windowAddFiles());
    mEdit->setText(Lang::btnEdit());
    mEdit->setToolTip(Lang::btnEdit());
    mConvert->setText(Lang::windowConvertFiles());
    mConvert->setToolTip(Lang::windowConvertFiles());
    mReveal->setText(Lang::btnShowInFinder());
    mReveal->setToolTip(Lang::btnShowInFinder());
    mToggle->setToolTip(Lang::commFileInformation());
    mToggle->setAccessibleName(Lang::commFileInformation());
    mPanel->back().setToolTip(Lang::tabPlaylistTitle());
    mPanel->back().setAccessibleName(Lang::tabPlaylistTitle());
    mModel.languageDidChange();
    arrangeDetails();
    showEmptiness();
}

void LibraryTab::showIcons() {
    mAdd->setIcon(icon(QStringLiteral("add"), palette()));
    mEdit->setIcon(icon(QStringLiteral("edit"), palette()));
    mConvert->setIcon(icon(QStringLiteral("convert"), palette()));
    mReveal->setIcon(icon(QStringLiteral("folder"), palette()));
    mToggle->setIcon(icon(QStringLiteral("tag"), palette()));
    mGlass->setIcon(icon(QStringLiteral("search"), palette()));
    mClearSearch->setIcon(icon(QStringLiteral("close"), palette()));
}

// So that keys of the window do not come before what Escape leaves here.
bool LibraryTab::event(QEvent *event) {
    const auto *key = event->type() == QEvent::ShortcutOverride ? static_cast<QKeyEvent *>(event) : nullptr;
    if (key && key->key() == Qt::Key_Escape && (mDetails != Details::Closed || !mSearch->text().isEmpty()))
        event->accept();
    return QWidget::event(event);
}

// What neither the list nor a field has a use for.
void LibraryTab::keyPressEvent(QKeyEvent *event) {
    const bool isPlain = !(event->modifiers() & ~(Qt::KeypadModifier));
    const bool isShifted = event->modifiers() == Qt::ShiftModifier;
    const RecordedAudioInfo *item = chosen();
    switch (event->key()) {
    case Qt::Key_Escape:
        if (escape())
            return;
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
        if (isPlain && mSearch->hasFocus())
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
            return rename();
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
    if (event->type() == QEvent::PaletteChange)
        showIcons();
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

} // namespace cantorel::ui
