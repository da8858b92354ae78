#include "app/start/SignalWatch.h"
#include "cli/Commands.h"
#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/Console.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonValue>
#include <QStringList>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace cantorel {

namespace {

constexpr int kStoppedBySignal = 130;

struct Arguments {
    std::vector<std::string> files;
    std::string format = "mp3", quality = "extreme", folder;
    bool merge = false;
};

// One run of "convert": a queue of the files, shown row by row. Main thread.
class ConvertRun : public QObject, public ConvertManagerDelegate {
public:
    explicit ConvertRun(const CommandSession &command) : mCommand(command) { mManager.delegate = this; }

    Outcome run(const QList<QUrl> &files, const QString &format, const QString &quality, bool merge) {
        mManager.outputAudioFormatDidChange(format, quality);
        mManager.parseAudioInfoWithURLs(files);
        mManager.startConvertWithMergeStatus(merge);
        mLoop.exec();
        clearProgressLine();
        return outcome();
    }

private:
    void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForProgress(int index, double progress) override {
        if (mCommand.json)
            mCommand.answer({{QStringLiteral("event"), QStringLiteral("progress")},
                             {QStringLiteral("index"), index},
                             {QStringLiteral("percent"), progress}},
                            {});
        if (!mShowsProgress)
            return;
        const auto whole = mManager.progress();
        std::fputs(qPrintable(QStringLiteral("\r\033[K%1 of %2  %3 %")
                                  .arg(whole.ended + 1)
                                  .arg(whole.rows)
                                  .arg(static_cast<int>(whole.percent))),
                   stdout);
        std::fflush(stdout);
        mProgressShown = true;
    }

    void ConvertManagerDelegate_UpdateConvertEntiyInfoWithIndexForSuccess(int index, bool success) override {
        const ZQAudioConvertEntity &row = *mManager.getAudioEntityWithRowIndex(index);
        const QString reason = Lang::english(row.failure());
        clearProgressLine();
        if (mCommand.json)
            mCommand.answer({{QStringLiteral("event"), QStringLiteral("done")},
                             {QStringLiteral("index"), index},
                             {QStringLiteral("status"), static_cast<int>(row.convertStatus())},
                             {QStringLiteral("output"), success ? QJsonValue(row.outputPath()) : QJsonValue()},
                             {QStringLiteral("reason"), success ? QJsonValue() : QJsonValue(reason)}},
                            {});
        if (success) {
            mCommand.note(QStringLiteral("%1 -> %2").arg(row.filePath(), row.outputPath()));
            return;
        }
        if (!mFailed.isEmpty()) // a single one is told at the end
            foundation::printToConsole(mReason + QLatin1Char('\n'));
        mReason = reason;
        mFailed << QFileInfo(row.filePath()).fileName();
    }

    void ConvertManagerDelegate_ConvertDidDone() override {
        const auto summary = mManager.summary();
        if (mCommand.json && !summary.mergedPath.isEmpty())
            mCommand.answer(
                {{QStringLiteral("event"), QStringLiteral("merged")}, {QStringLiteral("output"), summary.mergedPath}},
                {});
        else if (!summary.mergedPath.isEmpty())
            mCommand.note(QStringLiteral("Joined: %1").arg(summary.mergedPath));
        mLoop.quit();
    }

    void ConvertManagerDelegate_ConvertDidCancel() override {
        mIsStopped = true;
        mLoop.quit();
    }

    Outcome outcome() const {
        if (mIsStopped)
            return {kStoppedBySignal, QStringLiteral("Stopped by a signal; what was converted by then is kept.")};
        const auto summary = mManager.summary();
        if (mFailed.isEmpty())
            return summary.mergeFailure.isEmpty() ? Outcome::done() : Outcome::failed(summary.mergeFailure);
        if (mFailed.size() == 1 && summary.mergedPath.isEmpty() && summary.mergeFailure.isEmpty())
            return Outcome::failed(mReason);
        foundation::printToConsole(mReason + QLatin1Char('\n'));
        if (!summary.mergedPath.isEmpty())
            return Outcome::failed(QStringLiteral("\"%1\" lacks what could not be converted: %2.")
                                       .arg(summary.mergedPath, mFailed.join(QStringLiteral(", "))));
        if (!summary.mergeFailure.isEmpty())
            return Outcome::failed(summary.mergeFailure);
        return Outcome::failed(QStringLiteral("%1 of %2 files were not converted; the lines above say why.")
                                   .arg(mFailed.size())
                                   .arg(mManager.numberOfAudioEntitys()));
    }

    void clearProgressLine() {
        if (std::exchange(mProgressShown, false))
            std::fputs("\r\033[K", stdout);
        std::fflush(stdout);
    }

    const CommandSession &mCommand;
    SignalWatch mSignals{[this] { mManager.stopConvert(); }}; // before the threads of the manager
    foundation::WallClock mClock;
    ZQAudioConvertManager mManager{mClock};
    QEventLoop mLoop;
    const bool mShowsProgress = !mCommand.json && !mCommand.quiet && ::isatty(STDOUT_FILENO);
    bool mProgressShown = false, mIsStopped = false;
    QStringList mFailed; // their names
    QString mReason;     // of the last of them
};

Outcome convert(const CommandSession &session, const Arguments &arguments) {
    if (!arguments.folder.empty()) {
        const QString folder = QString::fromStdString(arguments.folder);
        if (!QFileInfo(folder).isDir())
            return Outcome::wrongUsage(
                QStringLiteral("There is no folder \"%1\"; make it first or name another.").arg(folder));
        standardUserDefaults().setArgument(QString::fromLatin1(setting::kConvertOutputFolder.key),
                                           QDir(folder).absolutePath());
    }
    const QString quality = arguments.quality == "extreme" ? Lang::video2mp3ExtremeQuality()
                            : arguments.quality == "high"  ? Lang::video2mp3HighQuality()
                                                           : Lang::video2mp3StandardQuality();
    ConvertRun run(session);
    return run.run(fileUrls(arguments.files), QString::fromStdString(arguments.format), quality, arguments.merge);
}

} // namespace

void addConvertCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &command = addVerb(root, session, "convert", "Converts sound files, one after another",
                                "convert *.wav --format mp3 --quality high",
                                [&session, arguments] { return convert(session, *arguments); });
    command.add_option("FILE", arguments->files, "The sound files")->required();
    command.add_option("--format", arguments->format, "What to convert to; mp3 without it")
        ->check(CLI::IsMember({"mp3", "aac", "m4a", "m4r", "wma", "wav", "flac", "alac"}));
    command.add_option("--quality", arguments->quality, "Of lossy formats; extreme without it")
        ->check(CLI::IsMember({"extreme", "high", "standard"}));
    command.add_flag("--merge", arguments->merge, "Joins the results into one file in their place");
    command.add_option("--folder", arguments->folder, "Where the results go");
}

} // namespace cantorel
