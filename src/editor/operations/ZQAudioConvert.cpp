#include "editor/operations/ZQAudioConvert.h"

#include "convert/AudioConverter.h"
#include "editor/operations/InOrder.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/media/DiskSpace.h"
#include "platform/media/export/ExportSession.h"
#include "settings/AppSettings.h"
#include "tags/TagWriting.h"
#include "util/ToolFile.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <utility>

namespace cantorel {

using foundation::Failure;
using foundation::HiddenFile;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kExportKept("ExportKept", "Reason", "FileName");

void flush(const QString &path) {
    const foundation::FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    if (file.isOpen())
        (void)::fsync(file.get()); // there is no better one to fall back to
}

} // namespace

ZQAudioConvert::ZQAudioConvert(Converter converter, std::vector<FileStamp> exported,
                               std::function<void(double)> progress)
    : mConverter(std::move(converter)), mExported(std::move(exported)), mProgress(std::move(progress)) {}

void ZQAudioConvert::convertAudioPaths(const QStringList &paths, const ZQAudioExportFormat &WithExportFormat,
                                       QStringList outputPaths, int startIndex, AudioConvertDelegate &convertDelegate) {
    const ZQAudioExportFormat &format = WithExportFormat;
    const auto wanted = [&](int index) { return ToolFile::pathWithExtension(paths[index], format.fileType); };
    std::atomic<double> done = 0;
    inOrder(
        startIndex, static_cast<int>(paths.size()), kPartsAtOnce,
        [&](int index) {
            double before = 0;
            return AudioConverter::convertExported(
                paths[index], AppSettings::freePathInFolder(wanted(index)), mConverter, [&](double percent) {
                    const double gone = done.fetch_add(percent - before) + percent - before;
                    before = percent;
                    mProgress(gone / 100 / static_cast<double>(paths.size()));
                });
        },
        [&](int index, Result<HiddenFile> result) {
            const bool isConverted = result.ok();
            const QString path = takeResult(paths[index], wanted(index), std::move(result));
            if (path.isEmpty())
                return;
            outputPaths << path;
            if (isConverted && format.fileType == QLatin1String("mp3"))
                saveID3ToFile(path, format.ofPart(static_cast<std::size_t>(index)));
        });
    convertDelegate.AudioConvertDidDone(*this, outputPaths);
}

QString ZQAudioConvert::takeResult(const QString &input, const QString &output, Result<HiddenFile> result) {
    QString path = AppSettings::freePathInFolder(output);
    if (mConverter.stop.stop_requested()) {
        removeExported(input);
        if (mFailures.empty())
            mFailures.push_back({media::kExportStopped(), QStringLiteral("stopped at %1").arg(input)});
        return {};
    }
    const auto kept = [&](const Failure &why) {
        flush(input); // it was meant to go
        mFailures.push_back({kExportKept(why.sentence, QFileInfo(input).fileName()), why.detail});
        return input;
    };
    if (!result)
        return kept(result.failure());
    if (const int error = takeFreeName(result.value(), path, AppSettings::freePathInFolder))
        return kept(media::folderFailed(QFileInfo(path).absolutePath(), error));
    removeExported(input);
    return path;
}

void ZQAudioConvert::removeExported(const QString &path) {
    const bool isOurs =
        std::any_of(mExported.begin(), mExported.end(), [&](const FileStamp &file) { return file.isAt(path); });
    if (isOurs)
        (void)QFile::remove(path); // what cannot go is whole, and its name says what it is
}

void ZQAudioConvert::saveID3ToFile(const QString &path, const ZQAudioExportFormat &withID3Format) {
    id3Tag tag;
    tag.id3Title = withID3Format.ID3Title;
    tag.id3Artist = withID3Format.ID3Artist;
    tag.id3Album = withID3Format.ID3Album;
    tag.id3Genre = withID3Format.ID3Genre;
    tag.id3Year = withID3Format.ID3Year;
    tag.id3Image = withID3Format.artwork();
    for (const TagsWritten::Failed &failed : writeTags({{path, tag}}).failures)
        mFailures.push_back(failed.failure);
}

} // namespace cantorel
