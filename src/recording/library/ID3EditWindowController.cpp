#include "recording/library/ID3EditWindowController.h"

#include "log/GuardedAction.h"
#include "log/Log.h"
#include "recording/library/RecordedList.h"
#include "tags/AudioIdentify.h"
#include "tags/Pictures.h"
#include "tags/TagReading.h"
#include "util/ToolFile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace cantorel {

namespace {

constexpr foundation::SentenceKey kNoPicture("NoPicture", "FileName");

constexpr QString id3Tag::*kTexts[] = {&id3Tag::id3Title, &id3Tag::id3Artist, &id3Tag::id3Album, &id3Tag::id3Year,
                                       &id3Tag::id3Genre};
constexpr std::optional<QString> id3TagEdit::*kEdits[] = {&id3TagEdit::title, &id3TagEdit::artist, &id3TagEdit::album,
                                                          &id3TagEdit::year, &id3TagEdit::genre};

bool takesTags(const QString &file) {
    const QString extension = ToolFile::fileExtensionAtPath(file).toLower();
    return extension != QLatin1String("wav") && extension != QLatin1String("aac");
}

// Empty for what is no JPEG and no PNG.
QByteArray pictureIn(const QString &name) {
    QFile file(name);
    if (!QFileInfo(name).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.read(kLargestPicture + 1);
    const char *kind = pictureKind(bytes);
    const bool isKnown = kind && (qstrcmp(kind, "jpeg") == 0 || qstrcmp(kind, "png") == 0);
    const auto pictures = loadPictures();
    return isKnown && pictures && pictures.value()->size(bytes) ? bytes : QByteArray();
}

} // namespace

// What several files have in common.
class ID3EditWindowController::Merged {
public:
    void add(const QString &file) {
        const auto tag = AudioIdentify::getID3TagFromFile(file);
        mIsKnown = mIsKnown && tag;
        mIsPlain = mIsPlain || !takesTags(file);
        if (!tag)
            return;
        for (std::size_t field = 0; field < FieldCount; ++field) {
            Text &shown = mShown.texts[field];
            const QString &text = (*tag).*kTexts[field];
            shown.isMixed = shown.isMixed || (!mIsFirst && text != shown.text);
            shown.text = shown.isMixed ? QString() : text;
        }
        mIsSameImage = mIsSameImage && (mIsFirst || tag->id3Image == mShown.image);
        mShown.image = mIsSameImage ? tag->id3Image : QByteArray();
        mIsFirst = false;
    }
    const Shown &shown() const { return mShown; }
    State state() const { return !mIsKnown || mIsFirst ? State::Unknown : mIsPlain ? State::Plain : State::Editable; }

private:
    Shown mShown;
    bool mIsFirst = true, mIsKnown = true, mIsPlain = false, mIsSameImage = true;
};

ID3EditWindowController::ID3EditWindowController(RecordedList &list) : mList(list) {}

ID3EditWindowController::~ID3EditWindowController() {
    ++mAsked;
    mWorker.finish();
}

void ID3EditWindowController::edit(const QStringList &files) {
    if (mFiles == files)
        return;
    const auto before = unsaved();
    mFiles = files;
    mShown = {};
    displayID3();
    if (before)
        Q_EMIT left(*before);
}

bool ID3EditWindowController::leave() {
    const auto before = unsaved();
    if (!before)
        return false;
    displayID3();
    Q_EMIT left(*before);
    return true;
}

std::optional<ID3EditWindowController::Unsaved> ID3EditWindowController::unsaved() const {
    return mState == State::Editable && isTouched() ? std::optional(Unsaved{mFiles, touched()}) : std::nullopt;
}

void ID3EditWindowController::displayID3() {
    const int asked = ++mAsked;
    if (mFiles.isEmpty()) {
        mShown = {};
        setState(State::Unknown);
        return;
    }
    setState(State::Reading);
    mWorker.start([this, files = mFiles, asked] {
        Merged merged;
        (void)guarded("displayID3", [&] { // logged there
            for (const QString &file : files)
                if (asked == mAsked)
                    merged.add(file);
        });
        // The destructor waits for this worker; calls that are queued by then are dropped.
        QMetaObject::invokeMethod(this, [this, merged, asked] {
            if (asked != mAsked)
                return;
            mShown = merged.shown();
            setState(merged.state());
        });
    });
}

void ID3EditWindowController::clearID3() {
    if (mState != State::Editable)
        return;
    for (int field = 0; field < FieldCount; ++field)
        setText(static_cast<Field>(field), {});
    if (canEditImage())
        deleteID3TagImage();
    Q_EMIT changed();
}

void ID3EditWindowController::addID3TagImage(const QString &file) {
    mWorker.start([this, files = mFiles, file] {
        QByteArray picture;
        (void)guarded("addID3TagImage", [&] { picture = pictureIn(file); }); // logged there
        QMetaObject::invokeMethod(this, [this, files, file, picture] {
            if (picture.isEmpty())
                Q_EMIT failed(kNoPicture(QFileInfo(file).fileName()));
            else if (files == mFiles)
                setImage(picture);
        });
    });
}

void ID3EditWindowController::setImage(const QByteArray &picture) {
    if (!canEditImage())
        return;
    mShown.image = picture;
    mShown.isImageTouched = true;
    Q_EMIT changed();
}

bool ID3EditWindowController::canEditImage() const {
    return mState == State::Editable && std::none_of(mFiles.begin(), mFiles.end(), isMovieName);
}

bool ID3EditWindowController::isTouched() const {
    return mShown.isImageTouched
           || std::any_of(mShown.texts.begin(), mShown.texts.end(), [](const Text &shown) { return shown.isTouched; });
}

id3TagEdit ID3EditWindowController::touched() const {
    id3TagEdit edit;
    for (std::size_t field = 0; field < FieldCount; ++field)
        if (const Text &shown = mShown.texts[field]; shown.isTouched)
            edit.*kEdits[field] = shown.text;
    if (mShown.isImageTouched)
        edit.image = mShown.image;
    return edit;
}

void ID3EditWindowController::saveID3tag() {
    if (mState != State::Editable)
        return;
    const Unsaved unsaved{mFiles, touched()};
    setState(State::Saving);
    save(unsaved);
}

void ID3EditWindowController::save(const Unsaved &unsaved) {
    mWorker.start([this, unsaved] {
        TagsWritten done;
        const QString year = unsaved.edit.year.value_or(QString());
        bool isYearKept = false;
        const bool hasEnded = guarded("saveID3tag", [&] {
            for (const QString &file : unsaved.files) {
                if (unsaved.edit.year && !yearToWrite(year))
                    isYearKept =
                        isYearKept || AudioIdentify::getID3TagFromFile(file).value_or(id3Tag()).id3Year != year;
                TagsWritten one = writeTags({{file, unsaved.edit}});
                std::move(one.undo.files.begin(), one.undo.files.end(), std::back_inserter(done.undo.files));
                std::move(one.failures.begin(), one.failures.end(), std::back_inserter(done.failures));
            }
        });
        if (!hasEnded)
            done.failures.push_back({unsaved.files.constFirst(), {QString(), QString()}});
        QMetaObject::invokeMethod(this, [this, done, unsaved, isYearKept] {
            const bool isShown = mFiles == unsaved.files;
            if (done.failures.empty())
                Log(QStringLiteral("save id3 tag ok"));
            Unsaved left;
            for (const TagsWritten::Failed &failure : done.failures)
                left = {left.files + QStringList(failure.path), unsaved.edit};
            settle(unsaved.files, done.failures.empty());
            Q_EMIT written(done, isShown ? Unsaved() : left, isYearKept);
        });
    });
}

void ID3EditWindowController::undo(const TagUndo &undo) {
    mWorker.start([this, undo] {
        std::vector<TagsWritten::Failed> failures;
        (void)guarded("undoTags", [&] { failures = undoTags(undo); }); // logged there
        QMetaObject::invokeMethod(this, [this, undo, failures] {
            QStringList files;
            for (const TagUndo::File &file : undo.files)
                files << file.path;
            settle(files, true);
            if (!failures.empty())
                Q_EMIT failed(failures.front().failure.sentence);
        });
    });
}

// What was touched meanwhile stays as it is.
void ID3EditWindowController::settle(const QStringList &files, bool isDone) {
    mList.takeTagsBehind(files);
    const bool isSaved = mState == State::Saving && files == mFiles;
    if (isSaved && !isDone)
        setState(State::Editable);
    else if (isSaved || (mState != State::Saving && !isTouched()))
        displayID3();
}

void ID3EditWindowController::setState(State state) {
    mState = state;
    Q_EMIT changed();
}

} // namespace cantorel
