#include "editor/painting/WaveFile.h"

#include "platform/foundation/LoadedModule.h"

namespace cantorel {

foundation::Result<void> writeWave(const QByteArray &levels, std::int32_t seconds, QSize size, const QString &path) {
    static const auto entry = foundation::loadFunction<WaveFileEntryPoint>("cantorel-wave.so", kWaveFileEntryPoint);
    if (!entry)
        return entry.failure();
    if (!entry.value()(levels, seconds, size, path))
        return foundation::Failure{QStringLiteral("The picture \"%1\" could not be written.").arg(path), path};
    return {};
}

} // namespace cantorel
