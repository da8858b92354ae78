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

constexpr int kWorkers = 2;       // They wait for services, which take one after the other.
constexpr int kShortest = 6;      // seconds, of what is identified by itself
constexpr int kMostAttempts = 99; // to find a name that nobody takes meanwhile

} // namespace

struct RecordingIdentification::Work {
    explicit Work(RecordedAudioInfo &it)
        : item(&it),
          before(it.getFileName()),
          file(before),
          identity(before),
          info(before),
          size(info.size()),
          modified(info.lastModified()) {}

    // It is still the file that was asked about.
    bool isUnchanged(const QString &path) const {
        const QFileInfo now(path);
        return identity.isAt(path) && now.size() == size && now.lastModified() == modified;
    }

    RecordedItemPointer item;
    QString before, file;
    foundation::FileIdentity identity;
    QFileInfo info;
    qint64 size;
    QDateTime modified;
    std::optional<RecognisedMusic> music, proposal;
    foundation::Sentence trouble;
    id3Tag tags; // of the file, with what was recognised
    TagsWritten result;
};

RecordingIdentification::RecordingIdentification(RecordedList &list, Recogniser recogniser)
    : mList(list), mRecogniser(std::move(recogniser)) {
    mWorkers.setMaxThreadCount(kWorkers);
}

RecordingIdentification::~RecordingIdentification() {
    mStop.request_stop();
    mWorkers.waitForDone();
}

std::shared_ptr<RecordingIdentification::Work> RecordingIdentification::begin(const QString &path) {
    RecordedAudioInfo *item = mList.itemWithFile(path);
    if (!item || item->isIdentifying || item->isInUse() || !QFileInfo(path).isFile())
        return nullptr;
    item->isProcessing = true;
    item->isIdentifying = true;
    item->setStatus(Lang::commIdentifying() + QStringLiteral("..."));
    ++mUnderWay;
    return std::make_shared<Work>(*item);
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
    const auto work = begin(path);
    if (!work)
        return;
    behind(
        work,
        [this](Work &of) {
            CommAudioIdentify recogniser = mRecogniser(mStop.get_token());
            of.music = recogniser.Start(of.before, true);
            of.proposal = recogniser.proposal();
            of.trouble = recogniser.trouble();
            if (of.music)
                of.tags = recognisedTags(readTags(of.before).value_or(id3Tag()), *of.music);
        },
        &RecordingIdentification::answered);
}

bool RecordingIdentification::identifyFinished(const RecordedAudioInfo &item) {
    // Without access nobody could be asked.
    if (!AppSettings::isAutoIdentifyID3() || AppSettings::recognitionAccess().isEmpty()
        || Tools::getSecondsFromString(item.duration()) < kShortest)
        return false;
    identifyID3TagsFromFile(item.getFileName());
    return item.isIdentifying;
}

void RecordingIdentification::use(const QString &file, const RecognisedMusic &music) {
    const auto work = begin(file);
    if (!work)
        return;
    work->music = music;
    behind(
        work, [](Work &of) { of.tags = recognisedTags(readTags(of.before).value_or(id3Tag()), *of.music); },
        &RecordingIdentification::answered);
}

// The file may have been renamed meanwhile, and is followed; removed or changed, it is left alone.
void RecordingIdentification::answered(const std::shared_ptr<Work> &work) {
    RecordedAudioInfo *item = work->item;
    const bool isSame = item && work->isUnchanged(item->getFileName());
    if (!work->music || !isSame) {
        end(*work);
        if (isSame && work->proposal)
            Q_EMIT proposed(work->file, *work->proposal);
        else if (isSame)
            Q_EMIT notIdentified(work->file, work->trouble);
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
            of.result = writeTags({{of.file, of.tags}});
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
    const QFileInfo file(item.getFileName());
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    QString wanted = base;
    for (int n = 1; n < kMostAttempts; ++n) {
        if (mList.rename(item, wanted))
            return;
        if (!QFileInfo::exists(file.path() + QLatin1Char('/') + wanted + suffix))
            break;
        wanted = QStringLiteral("%1(%2)").arg(base).arg(n);
    }
    Log(QStringLiteral("%1 keeps its name").arg(item.getFileName()));
}

void RecordingIdentification::written(const std::shared_ptr<Work> &work) {
    if (!work->music->Title().isEmpty())
        Log(work->result.failures.empty() ? QStringLiteral("audio identify succ")
                                          : QStringLiteral("audio identify failed. file extension:%1")
                                                .arg(ToolFile::fileExtensionAtPath(work->before)));
    if (!work->result.undo.files.empty())
        mList.takeTags({work->file});
    end(*work);
    Q_EMIT identified({work->before, work->file, *work->music, work->result.undo});
}

void RecordingIdentification::end(Work &work) {
    --mUnderWay;
    RecordedAudioInfo *item = work.item;
    if (!item)
        return;
    item->isIdentifying = false;
    item->isProcessing = false;
    item->setStatus({});
    if (mList.view)
        mList.view->recordedListDidChange();
}

void RecordingIdentification::undo(const Identified &identified) {
    RecordedAudioInfo *item = mList.itemWithFile(identified.file);
    if (!item || item->isInUse())
        return;
    for (const auto &failed : undoTags(identified.tags))
        Log(QStringLiteral("the tags of %1 stay: %2").arg(failed.path, failed.failure.detail));
    if (identified.file != identified.before)
        renameTo(*item, ToolFile::fileNameAtPath(identified.before));
    mList.takeTags({item->getFileName()});
}

} // namespace cantorel
