// The series of levels of a long file against ffmpeg, which only decodes it: wall clock, CPU and peak memory of whole
// processes, taken in turns in one run. Prints ratios and what they were meant to be at most, and how much more memory
// is taken than ffmpeg takes, the series itself not counted.
// usage: levels_bench [seconds of sound] [rounds] [row...]

#include "editor/levels/GroupMeans.h"
#include "editor/levels/LevelReading.h"
#include "editor/levels/StoredLevels.h"
#include "platform/media/asset/OpenAsset.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QUrl>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace cantorel;
using Clock = std::chrono::steady_clock;

namespace {

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// One whole process.
struct Cost {
    double wall = 0, cpu = 0, mebibytes = 0;
};

Cost run(const std::vector<std::string> &command) {
    std::vector<char *> arguments;
    for (const std::string &word : command)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    const Clock::time_point start = Clock::now();
    pid_t child = 0;
    if (::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0)
        return {};
    int status = 0;
    rusage used = {};
    ::wait4(child, &status, 0, &used);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    if (status != 0)
        std::printf("  %s ended with %d\n", command[0].c_str(), status);
    return {secondsSince(start), seconds(used.ru_utime) + seconds(used.ru_stime),
            static_cast<double>(used.ru_maxrss) / 1024};
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The child: the series of one file, or what is found of it. Says when the first of it could be drawn.
int read(const char *file, const char *folder, bool isKept) {
    const Clock::time_point start = Clock::now();
    const auto opened = media::openAsset(QUrl::fromLocalFile(QString::fromLocal8Bit(file)));
    if (!opened)
        return 1;
    const StoredLevels stored(QString::fromLocal8Bit(folder));
    const QByteArray key = StoredLevels::keyOf(*opened.value());
    if (isKept)
        return stored.find(key, *opened.value()) ? 0 : 1;
    LevelReading reading(opened.value(), stored.folder());
    double first = 0;
    {
        const std::jthread watcher([&](const std::stop_token &stop) {
            while (first == 0 && !stop.stop_requested()) {
                if (!reading.preview().isEmpty())
                    first = secondsSince(start);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
        if (!reading.run({}))
            return 1;
    }
    if (std::getenv("TELL"))
        std::printf("  first picture at %.2f of the time\n", first / secondsSince(start));
    if (std::getenv("KEEP"))
        stored.keep(key, *opened.value(), *reading.series());
    return 0;
}

struct Row {
    const char *name;
    double wall, cpu; // at most
};

constexpr int kRate = 44100;
constexpr Row kRows[] = {{"sound.mp3", 0.50, 0.95},
                         {"plain.m4a", 0.50, 0.95},
                         {"noise.m4a", 0.82, 0.90},
                         {"sound.flac", 0.53, 1.03},
                         {"sound.wav", 0.12, 0.20}};

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // Its children say something in between.
    if (argc > 3 && (std::strcmp(argv[1], "--read") == 0 || std::strcmp(argv[1], "--find") == 0))
        return read(argv[2], argv[3], std::strcmp(argv[1], "--find") == 0);
    const std::string length = argc > 1 ? argv[1] : "3600";
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 3;
    const double seriesMebibytes =
        std::atof(length.c_str()) * kRate / kGroupFrames * sizeof(std::int16_t) / (1024 * 1024);
    std::vector<Row> rows(std::begin(kRows), std::end(kRows));
    if (argc > 3)
        std::erase_if(rows, [&](const Row &row) {
            return std::find(argv + 3, argv + argc, std::string(row.name)) == argv + argc;
        });
    const auto isMeasured = [&](const char *name) {
        return std::any_of(rows.begin(), rows.end(), [&](const Row &row) { return std::strcmp(row.name, name) == 0; });
    };
    const QTemporaryDir folder;
    const std::string path = folder.path().toStdString() + '/';
    const std::string piece = path + "piece.wav";
    run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i",
         "aevalsrc='0.3*sin(t*440)*exp(-mod(t,0.5)*4)+0.2*sin(t*t*60)+0.1*(random(0)-0.5)|0.3*sin(t*554)*exp(-mod(t,0."
         "5)"
         "*3)+0.1*(random(1)-0.5)':s=44100:d=120",
         piece});
    const auto encode = [&](const char *name, std::vector<std::string> coder) {
        if (!isMeasured(name))
            return;
        std::vector<std::string> command = {"ffmpeg", "-v", "error", "-i", piece};
        command.insert(command.end(), coder.begin(), coder.end());
        command.push_back(path + "piece-" + name);
        run(command);
        run({"ffmpeg", "-v", "error", "-stream_loop", "-1", "-i", path + "piece-" + name, "-t", length, "-c", "copy",
             path + name});
    };
    run({"ffmpeg", "-v", "error", "-stream_loop", "-1", "-i", piece, "-t", length, "-c", "copy", path + "sound.wav"});
    if (isMeasured("sound.flac"))
        run({"ffmpeg", "-v", "error", "-i", path + "sound.wav", path + "sound.flac"});
    encode("sound.mp3", {"-b:a", "320k"});
    encode("plain.m4a", {"-b:a", "256k", "-aac_pns", "0"});
    encode("noise.m4a", {"-b:a", "256k"});

    std::printf("%-10s %6s %5s  %6s %5s  %8s  (at most)\n", "", "wall", "", "CPU", "", "MiB");
    for (const Row &row : rows) {
        const std::string file = path + row.name;
        std::vector<double> wall, cpu, memory;
        for (int i = 0; i < rounds; ++i) {
            const Cost peer = run({"ffmpeg", "-v", "error", "-threads", "1", "-i", file, "-f", "null", "-"});
            const Cost own = run({argv[0], "--read", file, path + "levels"});
            wall.push_back(own.wall / peer.wall);
            cpu.push_back(own.cpu / peer.cpu);
            memory.push_back(own.mebibytes - seriesMebibytes - peer.mebibytes);
        }
        std::printf("%-10s %6.3f %5.2f  %6.3f %5.2f  %+8.1f\n", row.name, median(wall), row.wall, median(cpu), row.cpu,
                    median(memory));
        ::setenv("TELL", "1", 1);
        ::setenv("KEEP", "1", 1);
        const Cost whole = run({argv[0], "--read", file, path + "levels"});
        ::unsetenv("TELL");
        ::unsetenv("KEEP");
        const Cost found = run({argv[0], "--find", file, path + "levels"});
        std::printf("  found again in %.3f of the time\n", found.wall / whole.wall);
    }
    return 0;
}
