#include "tags/identify/Fingerprint.h"

#include "platform/foundation/LoadedModule.h"

namespace cantorel {

foundation::Result<Fingerprint> fingerprintOf(std::span<const std::int16_t> mono, int rate) {
    static const auto entry =
        foundation::loadFunction<FingerprintEntryPoint>("cantorel-fingerprint.so", kFingerprintEntryPoint);
    if (!entry)
        return entry.failure();
    Fingerprint fingerprint = entry.value()(mono, rate);
    if (fingerprint.items.empty() || fingerprint.text.isEmpty())
        return foundation::Failure{QStringLiteral("The sound is too short to be recognised."),
                                   QStringLiteral("no fingerprint of %1 frames").arg(mono.size())};
    return fingerprint;
}

} // namespace cantorel
