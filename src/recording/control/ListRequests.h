#pragma once

#include "platform/foundation/Result.h"
#include "recording/library/RecordedList.h"

namespace cantorel {

// Changes to recordings as a person names them, on the command line or from another program. Only for the
// owner of the list; the change is on the disk when they return. A failure is one sentence, and nothing has changed
// then. file: an absolute path.

// The new path.
foundation::Result<QString> renameRecording(RecordedList &list, const QString &file, const QString &name);
foundation::Result<void> removeRecording(RecordedList &list, const QString &file, bool deletesFile);

} // namespace cantorel
