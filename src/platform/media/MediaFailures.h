#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/asset/AssetFailures.h"

#include <QString>

// Every sentence that this module says when something fails, beside those of its assets.
namespace cantorel::media::failures {

foundation::Failure cannotCreate(const QString &path, int error);
// A full disk gets a sentence of its own.
foundation::Failure writeFailed(const QString &path, int error);
// Told before the disk is full; the file is whole.
foundation::Failure reserveReached(const QString &path);
foundation::Failure fileRemoved(const QString &path);
// Its folder was removed; why it could not be copied to another.
foundation::Failure notRescued(const QString &path, const foundation::Failure &why);
foundation::Failure notUnfinished(const QString &path);
foundation::Failure nothingToRepair(const QString &path);
foundation::Failure deviceNotOpened(const QString &name);
foundation::Failure noDevice();
// It has another sample rate or other channels than the recording began with.
foundation::Failure formatChanged(const QString &name);

} // namespace cantorel::media::failures
