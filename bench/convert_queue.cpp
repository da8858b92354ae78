// The conversion queue against shell loops of the same ffmpeg commands, in one run: many small files, one large file,
// and media information alone. Prints ratios of wall and CPU time, and the longest time that the main thread was away
// from its event loop. On an idle machine only: the queue stands back behind everything else, the loops do not.
// Limits: small files 1.00 in wall and CPU, the large one 1.01 in both, media information 0.55 in wall on two cores,
// the main thread 16 ms. Arguments: files (1000), minutes of the large file (30), rounds (3).

#include "convert/queue/ZQAudioConvertManager.h"
#include "lang/Lang.h"
#include "settings/AppSettings.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace {

using namespace cantorel;

// Seconds of the program and its children.
double cpu() {
    double sum = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used{};
        ::getrusage(who, &used);
        for (const timeval &time : {used.ru_utime, used.ru_stime})
            sum += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    }
    return sum;
}

struct Cost {
    double wall = 1e9, cpu = 1e9;
    // The least of several rounds.
    void take(const std::function<void()> &work) {
        QElapsedTimer timer;
        const double before = ::cpu();
        timer.start();
        work();
        wall = std::min(wall, static_cast<double>(timer.nsecsElapsed()) / 1e9);
        cpu = std::min(cpu, ::cpu() - before);
    }
};

void shell(const QString &script) {
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start("sh", {"-c", script});
    process.waitForFinished(-1);
}

// One run of the queue, or of the reading of media information alone.
class Run : public QObject, public ConvertManagerDelegate {
public:
    void run(const QList<QUrl> &files, bool converts) {
        // Not by a timer: on a busy machine each waits as long to be woken, with nothing to do.
        const auto *loop = QAbstractEventDispatcher::instance();
        connect(loop, &QAbstractEventDispatcher::awake, this, [this] {
            if (!mSinceAwake.isValid())
                mSinceAwake.start();
        });
        connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            mLongest = std::max(mLongest, mSinceAwake.elapsed());
            mSinceAwake.invalidate();
        });
        mSinceAwake.start();
        mLeft = converts ? -1 : static_cast<int>(files.size());
        mManager.delegate = this;
        mManager.outputAudioFormatDidChange("mp3", Lang::video2mp3HighQuality());
        mManager.parseAudioInfoWithURLs(files);
        if (converts)
            mManager.startConvertWithMergeStatus(false);
        mLoop.exec();
        mFailed = mManager.summary().failed;
    }
    qint64 longest() const { return mLongest; } // milliseconds
    int failed() const { return mFailed; }

private:
    void ConvertManagerDelegate_NeedUpdateEntiyInfoWithIndex(int, bool) override {
        if (--mLeft == 0)
            mLoop.quit();
    }
    void ConvertManagerDelegate_ConvertDidDone() override { mLoop.quit(); }

    foundation::WallClock mClock;
    ZQAudioConvertManager mManager{mClock};
    QEventLoop mLoop;
    QElapsedTimer mSinceAwake;
    qint64 mLongest = 0;
    int mLeft = 0, mFailed = 0;
};

void compare(const char *what, const QList<QUrl> &files, bool converts, const QString &folder, int rounds) {
    const QString source = QFileInfo(files.front().toLocalFile()).absolutePath();
    Cost ours, peer;
    qint64 longest = 0;
    int failed = 0;
    const auto clear = [&] {
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);
    };
    for (int round = 0; round < rounds; ++round) {
        clear();
        peer.take([&] {
            shell(QString("for f in '%1'/*; do ffmpeg -nostdin -i \"$f\"; %2; done")
                      .arg(source, converts ? QString("n=${f##*/}; ffmpeg -nostdin -i \"$f\" -vn -ab 256k -ar 44100 -y "
                                                      "'%1'/\"${n%.*}.mp3\"")
                                                  .arg(folder)
                                            : "true"));
        });
        clear();
        ours.take([&] {
            Run run;
            run.run(files, converts);
            longest = std::max(longest, run.longest());
            failed += run.failed();
        });
    }
    std::printf("%-28s wall %.3f (%.2f s)  CPU %.3f (%.2f s)  main thread away %lld ms%s\n", what,
                ours.wall / peer.wall, ours.wall, ours.cpu / peer.cpu, ours.cpu, static_cast<long long>(longest),
                failed ? "  FAILED" : "");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    const QTemporaryDir home;
    for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        qputenv(name, home.path().toLocal8Bit());
    qputenv("QT_NO_GLIB", "1"); // whose loop does not tell when it waits
    QCoreApplication application(argc, argv);
    const auto argument = [&](int index, int usual) {
        return argc > index ? std::max(std::atoi(argv[index]), 1) : usual;
    };
    const int count = argument(1, 1000), minutes = argument(2, 30), rounds = argument(3, 3);
    const QTemporaryDir work;
    const QString small = work.filePath("small"), large = work.filePath("large"), results = work.filePath("results");
    for (const QString &folder : {small, large, results})
        QDir().mkpath(folder);
    standardUserDefaults().setArgument(setting::kConvertOutputFolder.key, results);
    shell(QString("ffmpeg -nostdin -y -f lavfi -i anoisesrc=amplitude=0.1:duration=4:seed=1 -ac 2 '%1/0.flac'")
              .arg(small));
    shell(QString("ffmpeg -nostdin -y -f lavfi -i anoisesrc=amplitude=0.1:duration=%2:seed=1 -ac 2 '%1/0.flac'")
              .arg(large)
              .arg(minutes * 60));
    for (int i = 1; i < count; ++i)
        QFile::copy(small + "/0.flac", QString("%1/%2.flac").arg(small).arg(i));
    const auto all = [](const QString &folder) {
        QList<QUrl> files;
        for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files, QDir::Name))
            files << QUrl::fromLocalFile(file.absoluteFilePath());
        return files;
    };
    // The log's lines would drown the figures.
    if (!std::freopen("/dev/null", "w", stderr))
        return 1;
    compare("media information", all(small), false, results, rounds);
    compare("small files", all(small), true, results, rounds);
    compare("one large file", all(large), true, results, rounds);
    return 0;
}
