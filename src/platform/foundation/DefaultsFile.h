#pragma once

#include "platform/foundation/Result.h"

#include <QMap>
#include <QVariantMap>

#include <optional>

namespace cantorel::foundation {

// The XML property list of a defaults domain, in which data of hundreds of kilobytes stay where they are: in the file,
// undecoded, until somebody asks for them. Stateless; any thread. Descriptors are the caller's, and of ordinary files.

// Where in a file a value's data stand, as base64 text.
struct LargeData {
    qint64 at = 0;
    qint64 length = 0;
};

// The values of a list, and the keys whose large data stay in its file.
struct DefaultsContent {
    QVariantMap values;
    QMap<QString, LargeData> large;
};

// Nothing, and errno set, when the file cannot be read; a failure inside when it is no property list.
std::optional<Result<DefaultsContent>> readDefaults(int file);

// Nothing when they can no longer be read there.
std::optional<QByteArray> readLargeData(int file, const LargeData &where);

// Writes the content to an empty file, its large data copied from the source: what it is in the new file, or nothing,
// and errno set.
std::optional<DefaultsContent> writeDefaults(int file, const DefaultsContent &content, int source);

} // namespace cantorel::foundation
