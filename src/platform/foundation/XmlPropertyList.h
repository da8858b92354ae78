#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QVariant>

namespace cantorel::foundation {

// The list of an XML text, in one pass whatever its size. One that declares entities, nests too deeply or is not well
// formed fails; nothing outside the text is reached for. Stateless; any thread.
Result<QVariant> readXmlPropertyList(const QByteArray &bytes);

} // namespace cantorel::foundation
