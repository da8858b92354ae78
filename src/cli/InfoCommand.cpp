#include "cli/Commands.h"
#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/Console.h"

#include <QEventLoop>
#include <QJsonValue>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace cantorel {

namespace {

// One run of "info": the rows of a queue that nobody starts, each shown once all before it have been read. Main thread.
class InfoRun : public QObject, public ConvertManagerDelegate {
public:
    explicit InfoRun(const CommandSession &command) : mCommand(command) { mManager.delegate = this; }

    Outcome run(const QList<QUrl> &files) {
        mManager.parseAudioInfoWithURLs(files);
        if (mShown < mManager.numberOfAudioEntitys())
            mLoop.exec();
        if (mFailed == 0)
            return Outcome::done();
        return Outcome::failed(mFailed == 1 ? mReason
                                            : QStringLiteral("%1 of %2 files can't be read; the lines above say why.")
                                                  .arg(mFailed)
                                                  .arg(files.size()));
    }

private:
    void ConvertManagerDelegate_NeedUpdateEntiyInfoWithIndex(int /*index*/, bool /*isSuccess*/) override {
        for (const int rows = mManager.numberOfAudioEntitys(); mShown < rows; ++mShown) {
            const ZQAudioConvertEntity &row = *mManager.getAudioEntityWithRowIndex(mShown);
            if (row.isReading())
                return;
            show(row);
        }
        mLoop.quit();
    }

    void show(const ZQAudioConvertEntity &row) {
        const bool isRead = row.failure().isEmpty();
        mCommand.answer(
            {{QStringLiteral("file"), row.filePath()},
             {QStringLiteral("duration"), isRead ? QJsonValue(row.duration()) : QJsonValue()},
             {QStringLiteral("size"), row.fileSize()}},
            QStringLiteral("%1  %2  %3")
                .arg(isRead ? row.duration() : QStringLiteral("--:--:--"), row.fileSize().trimmed(), row.filePath()));
        if (isRead)
            return;
        if (++mFailed > 1) // a single one is told at the end
            foundation::printToConsole(mReason + QLatin1Char('\n'));
        mReason = Lang::english(row.failure());
    }

    const CommandSession &mCommand;
    foundation::WallClock mClock;
    ZQAudioConvertManager mManager{mClock};
    QEventLoop mLoop;
    int mShown = 0, mFailed = 0;
    QString mReason; // of the last that failed
};

} // namespace

void addInfoCommand(CLI::App &root, CommandSession &session) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App &command = addVerb(root, session, "info", "Shows the media information of sound files",
                                "info ~/Music/*.mp3", [&session, files] {
                                    InfoRun run(session);
                                    return run.run(fileUrls(*files));
                                });
    command.add_option("FILE", *files, "The sound files")->required();
}

} // namespace cantorel
