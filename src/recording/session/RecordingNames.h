#pragma once

#include "platform/foundation/Sentence.h"
#include "recording/session/FileUnderWay.h"

#include <QString>

namespace cantorel {

// Whether the person is asked for the name of the next recording that no task makes.
bool recordingIsNamedByHand();

// The path for a new recording, from its task or the settings; empty if the person was asked for a name and cancelled.
// Main thread.
QString chosenRecordingPath(const std::optional<ExecutedTask> &task = {});

// A name beside the chosen one that neither a recording has nor what it will be converted to: it must still be free
// when that has ended. Any thread.
QString freeRecordingPath(const QString &chosen);

// The same for a movie, which is not converted.
QString freeMoviePath(const QString &chosen);

// Where a recording goes whose folder was removed meanwhile: a free name in the folder that recordings go to without
// it, which is made. Any thread.
QString rescuePath(const QString &lost);
QString movieRescuePath(const QString &lost);
// What is then said: where it was, and the folder where it is.
inline constexpr foundation::SentenceKey kFolderRemoved("FolderRemoved", "FileName", "Folder");

} // namespace cantorel
