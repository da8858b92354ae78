#pragma once

#include "platform/foundation/Sentence.h"
#include "settings/RecordingSource.h"

namespace cantorel {

// What is missing for recordings of a source, as their page says it before anybody tries. A value; main thread.
struct RecordingAdvice {
    enum class Lack { Nothing, SoundServer, VirtualDevice };

    // As it is at this moment.
    static RecordingAdvice of(RecordingSource source);
    // Looks for a sound server at once; what comes of it is told as any other change of the devices.
    static void lookForServer();

    Lack lack = Lack::Nothing;
    foundation::Sentence sentence; // empty for nothing
};

} // namespace cantorel
