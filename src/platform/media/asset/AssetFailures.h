#pragma once

#include "platform/foundation/Result.h"

#include <QString>

// What is said when sound can't be read.
namespace cantorel::media::failures {

foundation::Failure codecsMissing(const QString &detail);
foundation::Failure cannotRead(const QString &path, int error);
foundation::Failure notSound(const QString &path, const QString &detail);
foundation::Failure changedWhileRead(const QString &path);

} // namespace cantorel::media::failures
