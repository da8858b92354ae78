#pragma once

#include "platform/foundation/Result.h"

#include <QString>

// Every sentence that is said when a camera fails.
namespace cantorel::media::failures {

foundation::Failure cameraBusy(const QString &name, const QString &detail);
foundation::Failure cameraGone(const QString &name, const QString &detail);
foundation::Failure cameraNotOpened(const QString &name, const QString &detail);

bool isCameraBusy(const foundation::Failure &failure);

} // namespace cantorel::media::failures
