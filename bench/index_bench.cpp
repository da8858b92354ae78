// The songs of one's own: how many pieces of 15 seconds are recognised, and what that costs against holding the plain
// fingerprints against each other. index_bench [SONGS [RECORDED [AT_ONCE]]]: so many songs are made, as many pieces of
// them and of others, of which so many of each are recorded by the program while it plays them, several at once; all
// others are converted.

#include "platform/foundation/ChildProcess.h"
#include "settings/AppSettings.h"
#include "tags/identify/CommAudioIdentify.h"
#include "tags/identify/DecodedSound.h"
#include "tags/identify/Fingerprint.h"
#include "tags/identify/SongScan.h"
#include "tags/index/SongIndex.h"
#include "tests/support/MadeSongs.h"
#include "tests/support/TestHome.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <atomic>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

using namespace cantorel;

namespace {

using Seconds = std::chrono::duration<double>;

template <class Action> double secondsOf(Action &&action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return Seconds(std::chrono::steady_clock::now() - begin).count();
}

// The file that a piece becomes, through the recorder or through the converter.
QString made(const QString &folder, int number, bool isRecorded, int songSeconds) {
    const QString piece = folder + "/piece.wav";
    test::Dice dice(2026u + static_cast<unsigned>(number));
    (void)test::writeMusic(piece, test::pieceOf(number, dice, songSeconds), {"-ar", "44100", "-ac", "2"});
    if (isRecorded) {
        const QString into = folder + "/recorded";
        QDir(into).removeRecursively();
        QDir().mkpath(into);
        (void)foundation::ChildProcess::run({CANTOREL_CLI,
                                             {"--backend", "embedded", "--quiet", "record", "--play", piece, "--format",
                                              "0", "--folder", into, "--identify", "off", "--skip-silence", "off"},
                                             {},
                                             // One program of a person records at a time.
                                             {"XDG_STATE_HOME=" + folder + "/state"}});
        QDirIterator below(into, {"*.mp3"}, QDir::Files);
        return below.hasNext() ? below.next() : QString();
    }
    const QString converted = folder + "/piece.mp3";
    (void)foundation::ChildProcess::run(
        {AppSettings::TessolarConverterPath(), {"-i", piece, "-b:a", "128k", "-y", converted}, {}, {}});
    return converted;
}

// The lowest share of wrong bits anywhere in the songs, item by item.
double plainCompare(const std::vector<FingerprintItems> &songs, const FingerprintItems &piece) {
    std::size_t least = 32 * piece.size();
    for (const FingerprintItems &song : songs)
        for (std::size_t at = 0; at + piece.size() <= song.size(); ++at) {
            std::size_t wrong = 0;
            for (std::size_t i = 0; i < piece.size(); ++i)
                wrong += static_cast<std::size_t>(std::popcount(piece[i] ^ song[at + i]));
            least = std::min(least, wrong);
        }
    return static_cast<double>(least) / (32 * static_cast<double>(piece.size()));
}

} // namespace

int main(int argc, char **argv) {
    const test::TestHome home;
    QCoreApplication application(argc, argv);
    const int songs = argc > 1 ? std::atoi(argv[1]) : 200, recorded = argc > 2 ? std::atoi(argv[2]) : 20,
              atOnce = argc > 3 ? std::atoi(argv[3]) : 8;
    const QString music = QDir::homePath() + "/songs";
    if (!QDir().mkpath(music))
        return 1;
    for (int i = 0; i < songs; ++i)
        if (!test::writeSong(QStringLiteral("%1/%2.mp3").arg(music).arg(i), i))
            return 1;
    const SongScan scan{songStorePath(), AppSettings::TessolarConverterPath(), {music}, {}, {}};
    std::optional<foundation::Result<SongScan::Summary>> summary;
    const double read = secondsOf([&] { summary = scan.run(); });
    if (!*summary || summary->value().known != songs)
        return std::fprintf(stderr, "the songs are not read\n"), 1;
    const double hours = songs * test::kMusicSeconds / 3600.0;
    std::printf("read %d songs, %.2f hours, in %.1f s\n", songs, hours, read);

    std::vector<FingerprintItems> pieces;
    struct Tally {
        int right = 0, wrong = 0, none = 0;
    } known[2], unknown[2]; // converted, recorded
    std::mutex counted;
    const auto ask = [&](const QString &folder, int number, bool isRecorded, int songSeconds, const QString &title,
                         Tally &tally) {
        const QString piece = made(folder, number, isRecorded, songSeconds);
        const auto found =
            CommAudioIdentify(AppSettings::TessolarConverterPath(), {}, {}, songStorePath()).Start(piece, false);
        ConvertTrouble trouble;
        const auto sound = DecodedSound::decode(AppSettings::TessolarConverterPath(), piece, 60, {}, trouble);
        std::optional<foundation::Result<Fingerprint>> print;
        if (sound)
            print = fingerprintOf(sound->samples(), DecodedSound::kRate);
        const std::lock_guard lock(counted);
        ++(!found ? tally.none : found->Title() == title ? tally.right : tally.wrong);
        if (print && *print)
            pieces.push_back(print->value().items);
    };
    std::atomic<int> next = 0;
    const auto work = [&](int worker) {
        const QString folder = QStringLiteral("%1/work%2").arg(QDir::homePath()).arg(worker);
        QDir().mkpath(folder);
        for (int i = next++; i < songs; i = next++) {
            const bool isRecorded = i < recorded;
            ask(folder, i, isRecorded, test::kMusicSeconds, test::titleOf(i), known[isRecorded]);
            ask(folder, 100'000 + i, isRecorded, test::kPieceSeconds, {}, unknown[isRecorded]);
        }
    };
    {
        std::vector<std::jthread> workers;
        for (int i = 0; i < atOnce; ++i)
            workers.emplace_back(work, i);
    }
    for (const int way : {0, 1})
        std::printf("%s: of %d pieces of songs %d right, %d wrong, %d none; of %d others %d with a name\n",
                    way ? "recorded" : "converted", known[way].right + known[way].wrong + known[way].none,
                    known[way].right, known[way].wrong, known[way].none, unknown[way].wrong + unknown[way].none,
                    unknown[way].wrong);

    const auto store = openSongStore(songStorePath(), SongStore::Opening::ToRead);
    if (!store || !store.value())
        return 1;
    std::vector<FingerprintItems> plain;
    std::size_t plainBytes = 0;
    for (qint64 id = 0;;) {
        const auto next = store.value()->after(id);
        if (!next || !next.value())
            break;
        id = next.value()->id;
        plain.push_back(store.value()->song(id).value()->items);
        plainBytes += plain.back().size() * sizeof(std::uint32_t);
    }
    const double indexed = secondsOf([&] {
        for (const FingerprintItems &piece : pieces)
            (void)findSong(*store.value(), piece);
    });
    double least = 1;
    const double compared = secondsOf([&] {
        for (const FingerprintItems &piece : pieces)
            least = std::min(least, plainCompare(plain, piece));
    });
    const double each = 1000 / static_cast<double>(pieces.size()) / hours;
    std::printf("a query, per hour of music: %.3f ms; plain compare %.3f ms, x %.2f\n", indexed * each, compared * each,
                indexed / compared);
    const double size = static_cast<double>(QFileInfo(songStorePath()).size());
    std::printf("size per hour of music: %.0f KiB; plain fingerprints %.0f KiB, x %.2f\n", size / 1024 / hours,
                static_cast<double>(plainBytes) / 1024 / hours, size / static_cast<double>(plainBytes));
    const bool isGood = (known[0].right + known[1].right) * 100 >= 95 * songs
                        && known[0].wrong + known[1].wrong + unknown[0].wrong + unknown[1].wrong == 0;
    std::printf("%s\n", isGood ? "as promised" : "NOT AS PROMISED");
    return isGood ? 0 : 1;
}
