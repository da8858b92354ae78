#include "platform/media/SoundFacts.h"

#include "platform/foundation/LoadedModule.h"
#include "platform/media/MediaFailures.h"

#include <QFile>

namespace cantorel::media {

namespace {

constexpr const char *kModule = "cantorel-ffmpeg-reader.so";

foundation::Failure cannotBePlayed(const QString &path, const QString &why) {
    return {QStringLiteral("\"%1\" can't be played; check that it is a sound file and may be read.").arg(path), why};
}

foundation::Result<SoundFacts> readFacts(const QString &path, bool asPromised) {
    static const auto entry = foundation::loadFunction<SoundFactsEntryPoint>(kModule, kSoundFactsEntryPoint);
    if (!entry)
        return failures::codecsMissing(entry.failure().detail);
    SoundFacts facts;
    QString why;
    if (!entry.value()(QFile::encodeName(path).constData(), asPromised, &facts, &why))
        return cannotBePlayed(path, why);
    return facts;
}

} // namespace

foundation::Result<SoundFacts> soundFacts(const QString &path) { return readFacts(path, false); }

foundation::Result<SoundFacts> promisedSoundFacts(const QString &path) { return readFacts(path, true); }

} // namespace cantorel::media
