#pragma once

#include "cli/CommandSession.h"
#include "platform/foundation/Result.h"

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace cantorel {

// Asks the Cantorel that runs in this person's session. Nothing when none does.
std::optional<foundation::Result<QVariantMap>> askRunningInstance(const char *method,
                                                                  const QStringList &arguments = {});

// Why nothing can be recorded: another Cantorel has the recorder. One that is only open is where it can be.
Outcome refusedByOwner();

// Changes a list that one process owns: by the action when nobody else owns it, which then does while it runs; else by
// asking the one that does. what: the list, for a sentence. shown: what follows a change by the other one.
Outcome changeOwnedList(const QString &what, const std::function<Outcome()> &action, const char *method,
                        const QStringList &arguments, const std::function<void(const QVariantMap &)> &shown);

// Renames a file, and the recording that it is where the list has it; nothing is overwritten.
Outcome renameInList(const QString &file, const QString &name);
// Has the list of recordings, whoever owns it, take the new tags of those files that it has.
Outcome takeTagsIntoList(const QStringList &files);

} // namespace cantorel
