#pragma once

#include "convert/Converter.h"
#include "editor/operations/FileStamp.h"
#include "editor/operations/ZQAudioExportFormat.h"
#include "platform/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace cantorel {

class ZQAudioConvert;

class AudioConvertDelegate {
public:
    virtual ~AudioConvertDelegate() = default;
    virtual void AudioConvertDidDone(ZQAudioConvert &convert, const QStringList &outputPaths) = 0;
};

// Converts what the editor has exported as M4A to another type. A result takes a free name beside its M4A once it is
// proved; only then the M4A goes, and only if it is still the file that was exported. One thread.
class ZQAudioConvert {
public:
    // exported: the paths that are going to be converted, as they were when they were exported. progress: from 0 to 1.
    ZQAudioConvert(Converter converter, std::vector<FileStamp> exported, std::function<void(double)> progress);

    // Blocks. The delegate is told on the calling thread, at the end and in any case; of a file that could not be
    // converted it gets the M4A, which stays. What was converted ahead still takes its name in order.
    void convertAudioPaths(const QStringList &paths, const ZQAudioExportFormat &WithExportFormat,
                           QStringList outputPaths, int startIndex, AudioConvertDelegate &convertDelegate);

    const std::vector<foundation::Failure> &failures() const { return mFailures; }

private:
    // Answers where the sound is now; nothing after a stop.
    QString takeResult(const QString &input, const QString &output, foundation::Result<foundation::HiddenFile> result);
    void removeExported(const QString &path);
    void saveID3ToFile(const QString &path, const ZQAudioExportFormat &withID3Format);

    const Converter mConverter;
    const std::vector<FileStamp> mExported;
    const std::function<void(double)> mProgress;
    std::vector<foundation::Failure> mFailures;
};

} // namespace cantorel
