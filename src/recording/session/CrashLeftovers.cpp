#include "recording/session/CrashLeftovers.h"

#include "lang/Lang.h"
#include "log/GuardedAction.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/media/UnfinishedName.h"
#include "recording/library/RecordedList.h"
#include "recording/library/RecordingsRemoval.h"
#include "recording/session/RecordingSessionView.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"
#include "util/ToolString.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace cantorel {

namespace {

constexpr std::size_t kMostNamed = 3; // a card stays small

QString describe(const RecordingJournal::Leftover &leftover) {
    const QString movie = media::finishedName(leftover.file);
    const QFileInfo file(movie.isEmpty() ? leftover.file : movie);
    return QStringLiteral("%1   %2   \u2248 %3   %4")
        .arg(file.fileName(), leftover.written.toString(QStringLiteral("yyyy-MM-dd HH:mm")),
             ToolString::stringFromDuration(leftover.seconds),
             ToolFile::fileSizeFormatterToString(leftover.bytes).trimmed());
}

} // namespace

CrashLeftovers::CrashLeftovers(RecordingSessionView &view, RecordedList &list, RecordingJournal &journal)
    : mView(view), mList(list), mJournal(journal) {
    mJournal.listIsStored = [this] { return mList.unsaved().isEmpty(); };
    mList.willConvert = [this](const QString &file) { (void)mJournal.begin(file); }; // at worst it is not looked for
    mList.didConvert = [this](const QString &file) { mJournal.end(file); };
}

CrashLeftovers::~CrashLeftovers() {
    mList.willConvert = mList.didConvert = {};
    mJournal.listIsStored = {};
}

std::vector<RecordingJournal::Leftover> CrashLeftovers::pending() {
    if (mIsRecovering)
        return {};
    sweep();
    auto leftovers = mJournal.leftovers();
    for (const auto &leftover : leftovers)
        if (RecordedAudioInfo *item = mList.itemWithFile(leftover.file))
            item->isInterrupted = true;
    return leftovers;
}

void CrashLeftovers::sweep() {
    if (mSweeper.joinable())
        return;
    QStringList folders = mList.folders();
    folders.append(AppSettings::outputPath());
    for (const QString &file : mJournal.abandoned())
        folders.append(QFileInfo(file).path());
    mSweeper = std::jthread([folders] {
        (void)guarded("sweep", [&] { // logged there
            QSet<QString> swept;
            for (const QString &folder : folders)
                swept.insert(QDir(folder).absolutePath());
            for (const QString &folder : swept)
                foundation::HiddenFile::sweep(folder);
        });
    });
    for (const QString &file : mJournal.dropEmpty())
        if (RecordedAudioInfo *item = mList.itemWithFile(file))
            mList.remove(*item);
}

bool CrashLeftovers::take(const RecordingJournal::Recovered &recovered) {
    RecordedAudioInfo *item = mList.itemWithFile(recovered.original);
    if (item && recovered.wasWhole && ToolString::secondFromString(item->duration()) > 0)
        return false; // The list has it.
    if (recovered.failure.isEmpty()) {
        if (!item)
            item = &mList.addRecordedFile(recovered.file, ToolString::stringFromDuration(0), {});
        item->isInterrupted = false;
        item->Seconds = recovered.durationSeconds;
        item->setDuration(ToolString::stringFromDuration(recovered.durationSeconds));
        item->setSize(ToolFile::fileSizeFormatterToString(QFileInfo(recovered.file).size()));
        item->setStatus({});
        mList.save(*item);
    } else if (item && !recovered.isPending()) {
        mList.remove(*item);
    }
    mView.recordingRecovered(recovered);
    return true;
}

CrashLeftovers::Recovered CrashLeftovers::take(const QString &file, const Recovered &recovered) {
    Recovered taken;
    bool isPending = false;
    for (const auto &one : recovered) {
        isPending |= one.isPending();
        if (take(one))
            taken.push_back(one);
    }
    if (!isPending)
        mJournal.end(file);
    return taken;
}

void CrashLeftovers::recover() {
    if (mIsRecovering)
        return;
    sweep();
    for (const QString &file : mJournal.abandoned())
        if (!RecordingJournal::isOutOfReach(file))
            (void)take(file, RecordingJournal::recover(file)); // the view is told there
}

void CrashLeftovers::recoverBehind(std::function<void(const Recovered &)> done) {
    QStringList files = mJournal.abandoned();
    files.removeIf(&RecordingJournal::isOutOfReach);
    if (files.isEmpty() || std::exchange(mIsRecovering, true))
        return;
    mWorker = std::jthread([this, files, done = std::move(done)] {
        std::vector<Recovered> repaired;
        (void)guarded("recover", [&] { // logged there
            for (const QString &file : files)
                repaired.push_back(RecordingJournal::recover(file));
        });
        // The destructor waits for this worker, so "this" is valid here; calls still queued by then are dropped.
        QMetaObject::invokeMethod(this, [this, files, repaired = std::move(repaired), done] {
            mIsRecovering = false;
            Recovered all;
            // What an exception has left out is offered again by the next start.
            for (std::size_t i = 0; i < repaired.size(); ++i) {
                const Recovered taken = take(files[static_cast<qsizetype>(i)], repaired[i]);
                all.insert(all.end(), taken.begin(), taken.end());
            }
            if (done)
                done(all);
        });
    });
}

foundation::Result<void> CrashLeftovers::discard() {
    QString failed;
    for (const auto &leftover : pending()) {
        if (!QFile::moveToTrash(leftover.file)) {
            failed = failed.isEmpty() ? leftover.file : failed;
            continue;
        }
        mJournal.end(leftover.file);
        if (RecordedAudioInfo *item = mList.itemWithFile(leftover.file))
            mList.remove(*item);
        Log(QStringLiteral("discarded an unfinished recording : %1").arg(leftover.file));
    }
    if (failed.isEmpty())
        return {};
    return foundation::Failure{kNotToWastebasket(failed), {}};
}

QString leftoversText(const std::vector<RecordingJournal::Leftover> &leftovers) {
    QStringList parts;
    for (std::size_t i = 0; i < std::min(leftovers.size(), kMostNamed); ++i)
        parts << describe(leftovers[i]);
    if (leftovers.size() > kMostNamed)
        parts << QStringLiteral("(+%1)").arg(leftovers.size() - kMostNamed);
    return parts.join(QLatin1Char('\n'));
}

QString recoveredText(const CrashLeftovers::Recovered &recovered) {
    if (recovered.empty())
        return {};
    const auto failed = std::find_if(recovered.begin(), recovered.end(),
                                     [](const auto &recording) { return !recording.failure.isEmpty(); });
    const auto &told = failed == recovered.end() ? recovered.front() : *failed;
    QString text = failed != recovered.end() ? Lang::windowNotRecovered()
                   : recovered.size() == 1   ? Lang::windowRecovered()
                                             : Lang::windowSeveralRecovered(static_cast<qint64>(recovered.size()));
    return text.replace(QLatin1String("[#Time#]"), ToolString::stringFromDuration(told.durationSeconds))
        .replace(QLatin1String("[#FileName#]"), QFileInfo(told.file).fileName());
}

} // namespace cantorel
