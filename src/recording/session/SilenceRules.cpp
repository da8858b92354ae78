#include "recording/session/SilenceRules.h"

#include "log/Log.h"

namespace cantorel {

namespace {

constexpr double kLevelMilliseconds = 100;
constexpr float kSoundLevel = 0.005f;

} // namespace

void SilenceRules::level(float level) { hasSound = level >= kSoundLevel; }

SilenceRules::Action SilenceRules::skip(PausedBy paused, const Settings &settings) const {
    if (paused == PausedBy::Nobody && settings.skips && !hasSound)
        return Action::Pause;
    // Skipping that is switched off in the middle of silence ends its pause too.
    if (paused == PausedBy::Silence && (hasSound || !settings.skips))
        return Action::Resume;
    return Action::None;
}

// Deliberate: the counter is not reset when sound comes back, so a file ends after that much silence in all. What the
// person has paused is no silence.
bool SilenceRules::count(PausedBy paused, const Settings &settings, bool showsTime, bool canSplit) {
    if (hasSound || paused == PausedBy::Person)
        return false;
    if (silenceDuration <= 0) {
        plusSilenceDuration(settings, showsTime);
        return false;
    }
    if (!settings.skips || !settings.splits)
        return false;
    if (silenceDuration < settings.splitMilliseconds || !canSplit) {
        plusSilenceDuration(settings, showsTime);
        return false;
    }
    silenceDuration = 0;
    return showsTime;
}

void SilenceRules::plusSilenceDuration(const Settings &settings, bool showsTime) {
    if (!settings.skips || !settings.splits || !showsTime)
        return;
    silenceDuration += kLevelMilliseconds;
    Log(QStringLiteral("silenceDuration :%1").arg(silenceDuration, 0, 'f', 6));
}

} // namespace cantorel
