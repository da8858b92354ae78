#include "platform/media/SoundReader.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/MediaFailures.h"

#include <QFile>

namespace cantorel::media {

foundation::Result<std::unique_ptr<SoundReader>> openSound(const QString &path, int rate, int channels) {
    static const auto entry = foundation::loadEntryPoint("cantorel-ffmpeg-reader.so", kSoundReaderEntryPoint);
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    QString why;
    SoundReader *reader = reinterpret_cast<SoundReaderEntryPoint>(entry.value())(QFile::encodeName(path).constData(),
                                                                                 rate, channels, &why);
    if (!reader)
        return foundation::Failure{
            QStringLiteral("\"%1\" can't be played; check that it is a sound file and may be read.").arg(path), why};
    return std::unique_ptr<SoundReader>(reader);
}

} // namespace cantorel::media
