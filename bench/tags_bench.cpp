// Tags of many files against TagLib alone, in one run: reading against a bare loop, the safe write against copying the
// file, writing its tags and renaming it, in CPU time. Flushing to the disk is told apart: the same once more where
// both flush. A file system may begin to write at a rename, which the peer then pays for in the first comparison as
// well.
//
// usage: tags_bench FOLDER FILE...   Copies of the files, 1000 for each of the two, are made in the folder.

#include "tags/AudioIdentify.h"
#include "tags/TagWriting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <taglib/mp4file.h>
#include <taglib/mp4tag.h>
#include <taglib/mpegfile.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace {

using namespace cantorel;

constexpr int kFiles = 1000, kRounds = 5;
constexpr const char *kLimit = " (limit 1.05)";

// Of the processor, in our code and in the system's.
double secondsOf(const std::function<void()> &action) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double begin = now();
    action();
    return now() - begin;
}

// The quickest of several rounds of both, one after the other: what the machine does besides only adds.
std::pair<double, double> bestOf(const std::function<void(int)> &ours, const std::function<void(int)> &peers) {
    std::pair<double, double> best{1e9, 1e9};
    for (int round = 0; round < kRounds; ++round) {
        best.first = std::min(best.first, secondsOf([&] { ours(round); }));
        best.second = std::min(best.second, secondsOf([&] { peers(round); }));
    }
    return best;
}

std::unique_ptr<TagLib::File> opened(const QByteArray &path) {
    if (path.endsWith(".m4a"))
        return std::make_unique<TagLib::MP4::File>(path.constData());
    return std::make_unique<TagLib::MPEG::File>(path.constData());
}

void report(const char *what, std::pair<double, double> seconds, const char *limit) {
    std::printf("%s: %.1f us a file, peer %.1f, ratio %.3f%s\n", what, seconds.first * 1e6 / kFiles,
                seconds.second * 1e6 / kFiles, seconds.first / seconds.second, limit);
}

} // namespace

// In place of the system's own function.
static bool flushes = false;
extern "C" int fsync(int file) { return flushes ? ::fdatasync(file) : 0; }

int main(int argc, char **argv) {
    if (argc < 3)
        return 2;
    const QString folder = QString::fromLocal8Bit(argv[1]);
    // Each has its own: who replaces a file pays for what becomes of the old one.
    std::vector<QByteArray> paths, peersPaths;
    for (int i = 0; i < 2 * kFiles; ++i) {
        const QString from = QString::fromLocal8Bit(argv[2 + i / 2 % (argc - 2)]);
        const QString path = QStringLiteral("%1/%2.%3").arg(folder).arg(i).arg(QFileInfo(from).suffix());
        QFile::remove(path);
        if (!QFile::copy(from, path))
            return 1;
        (i % 2 ? peersPaths : paths).push_back(QFile::encodeName(path));
    }
    std::size_t letters = 0; // so that nothing is left out
    report("reading",
           bestOf(
               [&](int) {
                   for (const QByteArray &path : paths)
                       letters += static_cast<std::size_t>(
                           AudioIdentify::getID3TagFromFile(QFile::decodeName(path))->id3Title.size());
               },
               [&](int) {
                   for (const QByteArray &path : paths) {
                       const auto file = opened(path);
                       const TagLib::Tag &tag = *file->tag();
                       letters += tag.title().size() + tag.artist().size() + tag.album().size() + tag.genre().size()
                                  + tag.year();
                   }
               }),
           kLimit);
    const auto ours = [&](int round) {
        std::vector<TagsOfFile> edits;
        for (const QByteArray &path : paths) {
            id3Tag tag;
            tag.id3Title = QStringLiteral("Title of round %1%2").arg(round).arg(flushes ? 'f' : ' ');
            edits.push_back({QFile::decodeName(path), tag});
        }
        if (!writeTags(edits).failures.empty())
            std::abort();
    };
    const auto peers = [&](int round) {
        for (const QByteArray &path : peersPaths) {
            const std::string copy = (path + ".copy" + (path.endsWith(".m4a") ? ".m4a" : ".mp3")).toStdString();
            std::filesystem::copy_file(path.constData(), copy);
            {
                const auto file = opened(QByteArray::fromStdString(copy));
                file->tag()->setTitle(TagLib::String("Peer's title " + std::to_string(round)));
                file->save();
            }
            if (const int written = flushes ? ::open(copy.c_str(), O_RDONLY | O_CLOEXEC) : -1; written >= 0) {
                ::fdatasync(written);
                ::close(written);
            }
            std::filesystem::rename(copy, path.constData());
        }
    };
    report("safe write", bestOf(ours, peers), kLimit);
    flushes = true;
    report("safe write, both flushing", bestOf(ours, peers), "");
    std::printf("%zu letters\n", letters);
    return 0;
}
