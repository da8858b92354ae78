// What the editor exports against ffmpeg, in one run: three selections of ten minutes in all of a file of an hour,
// joined, by its atrim and concat with the same coder and settings. Prints the median of the ratios of wall time and of
// CPU, pair by pair. Limits of the former on two idle cores: WAV 0.25, MP3 0.82, M4A 0.94; M4A, each selection for
// itself, 0.55.
// Arguments: FILE of an hour, rounds (3), what the names of the cases wanted hold (all).

#include "editor/operations/ZQAudioEditor.h"
#include "platform/media/asset/OpenAsset.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

namespace {

using namespace cantorel;

const std::vector<CutRange> kSelections{{300, 500}, {1500.5, 1700.5}, {3100, 3300}};

struct Cost {
    double wall = 0, cpu = 0; // seconds
};

// Of this process and of all that it has waited for.
double cpuSeconds() {
    double sum = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage used = {};
        ::getrusage(who, &used);
        for (const timeval &time : {used.ru_utime, used.ru_stime})
            sum += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    }
    return sum;
}

Cost costOf(const std::function<bool()> &action) {
    const double before = cpuSeconds();
    QElapsedTimer timer;
    timer.start();
    if (!action()) {
        std::fputs("an export failed\n", stderr);
        std::exit(1);
    }
    return {static_cast<double>(timer.nsecsElapsed()) / 1e9, cpuSeconds() - before};
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

bool exportByEditor(const QString &file, const char *type, bool joins) {
    const QTemporaryDir folder;
    standardUserDefaults().setArgument(QString::fromLatin1(setting::kAudioExportMergerEnable.key), joins);
    auto asset = media::openAsset(QUrl::fromLocalFile(file));
    if (!asset)
        return false;
    ZQAudioEditor editor(asset.value());
    editor.addSelectedCutEntitys(kSelections);
    ZQAudioExportFormat format;
    format.fileType = QString::fromLatin1(type);
    editor.exportAudioWithExportFotmat(format, folder.filePath(QStringLiteral("a.m4a")));
    while (editor.isExporting())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return editor.failure().isEmpty();
}

bool exportByFfmpeg(const QString &file, const char *extension, const QStringList &coder) {
    const QTemporaryDir folder;
    QString filter, inputs;
    for (std::size_t i = 0; i < kSelections.size(); ++i) {
        filter += QStringLiteral("[0:a]atrim=%1:%2,asetpts=PTS-STARTPTS[%3];")
                      .arg(kSelections[i].start)
                      .arg(kSelections[i].end)
                      .arg(i);
        inputs += QStringLiteral("[%1]").arg(i);
    }
    filter += inputs + QStringLiteral("concat=n=%1:v=0:a=1[out]").arg(kSelections.size());
    return QProcess::execute(
               QStringLiteral("ffmpeg"),
               QStringList{"-nostdin", "-v", "error", "-y", "-i", file, "-filter_complex", filter, "-map", "[out]"}
                   + coder + QStringList{folder.filePath(QStringLiteral("a.") + extension)})
           == 0;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    if (argc < 2)
        return std::fputs("usage: export_bench FILE [rounds] [case]\n", stderr), 2;
    const QString file = QString::fromLocal8Bit(argv[1]);
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 3;
    const QStringList converted{"-ab", "320K", "-ac", "2", "-ar", "44100"};
    const QStringList aac{"-c:a",     "aac", "-b:a",    "256k", "-aac_coder", "fast",
                          "-aac_pns", "0",   "-aac_is", "0",    "-aac_tns",   "0"};
    const struct {
        const char *name, *type, *extension;
        bool joins;
        QStringList coder;
        double limit;
    } cases[] = {{"joined WAV", "wav", "wav", true, converted, 0.25},
                 {"joined MP3", "mp3", "mp3", true, converted, 0.82},
                 {"joined M4A", "aac", "m4a", true, aac, 0.94},
                 {"M4A one by one", "aac", "m4a", false, aac, 0.55}};
    for (const auto &[name, type, extension, joins, coder, limit] : cases) {
        if (argc > 3 && !std::strstr(name, argv[3]))
            continue;
        std::vector<double> wall, cpu;
        Cost ours, peers;
        for (int round = 0; round < rounds; ++round) {
            peers = costOf([&] { return exportByFfmpeg(file, extension, coder); });
            ours = costOf([&] { return exportByEditor(file, type, joins); });
            wall.push_back(ours.wall / peers.wall);
            cpu.push_back(ours.cpu / peers.cpu);
        }
        std::printf("%-15s wall x%.2f (limit %.2f), CPU x%.2f; last round %.2f s against %.2f s\n", name, median(wall),
                    limit, median(cpu), ours.wall, peers.wall);
        std::fflush(stdout);
    }
}
