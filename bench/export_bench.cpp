// What the editor exports against ffmpeg, in one run: three selections of ten minutes in all of a file of an hour,
// joined, by its atrim and concat with the same coder and settings. Prints the median of the ratios of wall time, pair
// by pair. Limits on two idle cores: WAV 0.25, MP3 0.82, M4A 0.94; M4A, each selection for itself, 0.55.
// Arguments: FILE of an hour, rounds (3).

#include "editor/operations/ZQAudioEditor.h"
#include "platform/media/asset/OpenAsset.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

using namespace cantorel;

const std::vector<CutRange> kSelections{{300, 500}, {1500.5, 1700.5}, {3100, 3300}};

double secondsOf(const std::function<bool()> &action) {
    QElapsedTimer timer;
    timer.start();
    if (!action()) {
        std::fputs("an export failed\n", stderr);
        std::exit(1);
    }
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
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
        return std::fputs("usage: export_bench FILE [rounds]\n", stderr), 2;
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
        std::vector<double> ratios;
        double ours = 0, peers = 0;
        for (int round = 0; round < rounds; ++round) {
            peers = secondsOf([&] { return exportByFfmpeg(file, extension, coder); });
            ours = secondsOf([&] { return exportByEditor(file, type, joins); });
            ratios.push_back(ours / peers);
        }
        std::sort(ratios.begin(), ratios.end());
        std::printf("%-15s x%.2f (limit %.2f; last round %.2f s against %.2f s)\n", name, ratios[ratios.size() / 2],
                    limit, ours, peers);
        std::fflush(stdout);
    }
}
