#include "tags/identify/RecordingIdentification.h"

#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "log/Log.h"
#include "platform/foundation/FileIdentity.h"
#include "recording/library/RecordedList.h"
#include "settings/AppSettings.h"
#include "tags/TagReading.h"
#include "tags/identify/RecognisedName.h"
#include "util/ToolFile.h"
#include "util/tools/Tools.h"

#include <QDateTime>
#include <QFileInfo>

#include <utility>

namespace cantorel {

namespace {

constexpr int kWorkers = 2;  // They wait for services, which take one after the other.
constexpr int kShortest = 6; // seconds, of what is identified by itself

} // namespace

struct RecordingIdentification::Work {
    Work(RecordedAudioInfo &it, const QFileInfo &info, Asked by)
        : item(&it),
          before(it.getFileName()),
          file(before),
          identity(before),
          size(info.size()),
          modified(info.lastModified()),
          asked(by) {}

    // It is still the file that was asked about.
    bool isUnchanged(const QString &path) const {
        const QFileInfo now(path);
        return identity.isAt(path) && now.size() == size && now.lastModified() == modified;
    }

    RecordedItemPointer item;
    QString before, file;
    foundation::FileIdentity identity;
    qint64 size;
    QDateTime modified;
    Asked asked;
    std::optional<RecognisedMusic> music, proposal;
    foundation::Sentence trouble;
    bool wantsAgreement = false;
    id3Tag tags; // of the file, with what was recognised
    TagsWritten result;
    QString formerName; // that a step back gives it; empty where it has that
};

RecordingIdentification::RecordingIdentification(RecordedList &list, Recogniser recogniser)
    : mList(list), mRecogniser(std::move(recogniser)) {
    mWorkers.setMaxThreadCount(kWorkers);
}

RecordingIdentification::~RecordingIdentification() {
    mStop.request_stop();
    mWorkers.waitForDone();
}

std::shared_ptr<RecordingIdentification::Work> RecordingIdentification::begin(const QString &path, Asked asked) {
    RecordedAudioInfo *item = mList.itemWithFile(path);
    const QFileInfo info(path);
    if (!item || item->isInUse() || !info.isFile() || isMovieFile(path))
        return nullptr;
    item->isProcessing = true;
    item->isIdentifying = true;
    item->setStatus(Lang::commIdentifying() + QStringLiteral("..."));
    return mUnderWay.emplace_back(std::make_shared<Work>(*item, info, asked));
}

void RecordingIdentification::behind(const std::shared_ptr<Work> &work, std::function<void(Work &)> task,
                                     void (RecordingIdentification::*then)(const std::shared_ptr<Work> &)) {
    mWorkers.start([this, work, task = std::move(task), then] {
        (void)guarded("identify", [&] { task(*work); }); // logged there
        // The destructor waits for this worker; calls that are queued by then are dropped.
        QMetaObject::invokeMethod(this,
                                  [this, work, then] { (void)guarded("identified", [&] { (this->*then)(work); }); });
    });
}

void RecordingIdentification::identifyID3TagsFromFile(const QString &path) {
    for (const auto &work : mUnderWay)
        if (work->before == path)
            work->asked = Asked::ByHand; // What began by itself is waited for by now.
    (void)identify(path, Asked::ByHand); // not what is in use
}

bool RecordingIdentification::identify(const QString &path, Asked asked) {
    const auto work = begin(path, asked);
    if (!work)
        return false;
    behind(
        work,
        [this](Work &of) {
            CommAudioIdentify recogniser = mRecogniser(mStop.get_token());
            of.music = recogniser.Start(of.before, true);
            of.proposal = recogniser.proposal();
            of.trouble = recogniser.trouble();
            of.wantsAgreement = recogniser.wantsAgreement();
            if (of.music)
                of.tags = recognisedTags(*of.music).applied(readTags(of.before).value_or(id3Tag()));
        },
        &RecordingIdentification::answered);
    return true;
}

bool RecordingIdentification::identifyFinished(const RecordedAudioInfo &item) {
    // Without access and without songs nobody could be asked.
    const bool canBeAsked = AppSettings::isOwnSongs() || !AppSettings::recognitionAccess().isEmpty();
    return AppSettings::isAutoIdentifyID3() && canBeAsked && Tools::getSecondsFromString(item.duration()) >= kShortest
           && identify(item.getFileName(), Asked::ByItself);
}

void RecordingIdentification::use(const QString &file, const RecognisedMusic &music) {
    const auto work = begin(file, Asked::ByHand);
    if (!work)
        return;
    work->music = music;
    behind(
        work, [](Work &of) { of.tags = recognisedTags(*of.music).applied(readTags(of.before).value_or(id3Tag())); },
        &RecordingIdentification::answered);
}

// The file may have been renamed meanwhile, and is followed; removed or changed, it is left alone.
void RecordingIdentification::answered(const std::shared_ptr<Work> &work) {
    RecordedAudioInfo *item = work->item;
    const bool isSame = item && work->isUnchanged(item->getFileName());
    if (!work->music || !isSame) {
        end(work);
        if (isSame && work->proposal)
            Q_EMIT proposed(item->getFileName(), *work->proposal);
        else if (isSame && work->wantsAgreement && (work->asked == Asked::ByHand || !mIsDeclined)) {
            mAwaiting << item->getFileName();
            Q_EMIT agreementWanted();
        } else if (isSame && work->asked == Asked::ByHand) // What begins by itself says nothing in vain.
            Q_EMIT notIdentified(item->getFileName(), work->trouble);
        return;
    }
    Log(QStringLiteral("id3Info :%1").arg(work->music->description()));
    name(*work, *item);
    item->setAlbum(work->tags.id3Album);
    item->setArtist(work->tags.id3Artist);
    item->setYear(work->tags.id3Year);
    item->setCover(work->tags.id3Image);
    item->setSize(ToolFile::fileSizeFormatterToString(QFileInfo(work->file).size()));
    mList.save(*item); // Who kills us now finds the new name in the list.
    if (work->music->Title().isEmpty())
        return written(work);
    Log(QStringLiteral("ID3 auto identify completed and save it to file "));
    behind(
        work,
        [](Work &of) {
            of.result = writeTags({{of.file, recognisedTags(*of.music)}});
        },
        &RecordingIdentification::written);
}

void RecordingIdentification::name(Work &work, RecordedAudioInfo &item) {
    const QString base = recognisedName(item.getFileName(), *work.music);
    if (!base.isEmpty())
        renameTo(item, base);
    work.file = item.getFileName();
}

// Keeps the old name where the folder takes no other one.
void RecordingIdentification::renameTo(RecordedAudioInfo &item, const QString &base) {
    const QString before = item.getFileName();
    (void)renamedFreely(before, base, [&](const QString &name) { return mList.rename(item, name).ok(); });
    if (item.getFileName() == before)
        Log(QStringLiteral("%1 keeps its name").arg(before));
}

void RecordingIdentification::written(const std::shared_ptr<Work> &work) {
    if (!work->music->Title().isEmpty())
        Log(work->result.failures.empty() ? QStringLiteral("audio identify succ")
                                          : QStringLiteral("audio identify failed. file extension:%1")
                                                .arg(ToolFile::fileExtensionAtPath(work->before)));
    if (!work->result.undo.files.empty())
        mList.takeTagsBehind({work->file});
    end(work);
    Q_EMIT identified({work->before, work->file, *work->music, work->result.undo});
}

void RecordingIdentification::end(const std::shared_ptr<Work> &work) {
    std::erase(mUnderWay, work);
    RecordedAudioInfo *item = work->item;
    if (!item)
        return;
    item->isIdentifying = false;
    item->isProcessing = false;
    item->setStatus({});
    if (mList.view)
        mList.view->recordedListDidChange();
}

void RecordingIdentification::agree() {
    AppSettings::setRecognitionAgreed(true);
    for (const QString &file : std::exchange(mAwaiting, {}))
        (void)identify(file, Asked::ByHand); // not what is in use by now
}

void RecordingIdentification::notNow() {
    mAwaiting.clear();
    mIsDeclined = true;
}

void RecordingIdentification::undo(const Identified &identified) {
    const auto work = begin(identified.file, Asked::ByHand);
    if (!work)
        return;
    if (identified.file != identified.before)
        work->formerName = ToolFile::fileNameAtPath(identified.before);
    behind(
        work,
        [tags = identified.tags](Work &) {
            for (const auto &failed : undoTags(tags))
                Log(QStringLiteral("the tags of %1 stay: %2").arg(failed.path, failed.failure.detail));
        },
        &RecordingIdentification::undone);
}

void RecordingIdentification::undone(const std::shared_ptr<Work> &work) {
    end(work);
    RecordedAudioInfo *item = work->item;
    if (!item)
        return;
    if (!work->formerName.isEmpty())
        renameTo(*item, work->formerName);
    mList.takeTagsBehind({item->getFileName()});
}

} // namespace cantorel
