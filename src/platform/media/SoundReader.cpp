#include "platform/media/SoundReader.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/MediaFailures.h"

#include <QFile>

namespace cantorel::media {

namespace {

constexpr const char *kModule = "cantorel-ffmpeg-reader.so";

foundation::Failure cannotBePlayed(const QString &path, const QString &why) {
    return {QStringLiteral("\"%1\" can't be played; check that it is a sound file and may be read.").arg(path), why};
}

} // namespace

foundation::Result<std::unique_ptr<SoundReader>> openSound(const QString &path, int rate, int channels) {
    static const auto entry = foundation::loadEntryPoint(kModule, kSoundReaderEntryPoint);
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    QString why;
    SoundReader *reader = reinterpret_cast<SoundReaderEntryPoint>(entry.value())(QFile::encodeName(path).constData(),
                                                                                 rate, channels, &why);
    if (!reader)
        return cannotBePlayed(path, why);
    return std::unique_ptr<SoundReader>(reader);
}

foundation::Result<SoundFacts> soundFacts(const QString &path) {
    static const auto entry = foundation::loadEntryPoint(kModule, kSoundFactsEntryPoint);
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    SoundFacts facts;
    QString why;
    if (!reinterpret_cast<SoundFactsEntryPoint>(entry.value())(QFile::encodeName(path).constData(), &facts, &why))
        return cannotBePlayed(path, why);
    return facts;
}

} // namespace cantorel::media
