#pragma once

#include "platform/foundation/Result.h"
#include "recording/library/RecordedList.h"

namespace cantorel {

// Changes to recordings, requested on the command line or by another program. Only for the owner of the list; the
// change is on the disk when they return. On failure, one sentence, nothing has changed. file: an absolute path.

// The new path.
foundation::Result<QString> renameRecording(RecordedList &list, const QString &file, const QString &name);
foundation::Result<void> removeRecording(RecordedList &list, const QString &file, bool deletesFile);

} // namespace cantorel
