#include "editor/models/ZQAudioTools.h"

#include "editor/models/ZQAudioCutEntity.h"

#include <cmath>
#include <cstddef>

namespace cantorel {

void ZQAudioTools::getCurrentPlayingEntity(const ZQAudioCutEntity *&current, const ZQAudioCutEntity *&next,
                                           double seconds, int index, const Entities &entities, int rate) {
    current = next = nullptr;
    if (index < 0)
        return;
    // Slack, since a count of frames that has become seconds is not quite the same count again.
    const auto frame = [rate](double time) { return static_cast<std::int64_t>(std::floor(time * rate + 1e-4)); };
    for (auto i = static_cast<std::size_t>(index); i < entities.size(); ++i) {
        const ZQAudioCutEntity &entity = *entities[i];
        const bool isLast = i + 1 == entities.size();
        if (frame(entity.startTime()) > frame(seconds)) {
            next = &entity;
            return;
        }
        const bool isInside = frame(seconds) <= frame(entity.endTime());
        if (isInside)
            current = &entity;
        if (isInside || isLast) {
            next = isLast ? entities.front() : entities[i + 1];
            return;
        }
    }
}

} // namespace cantorel
