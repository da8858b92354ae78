#pragma once

#include "platform/foundation/Result.h"

#include <QString>

// Every failure of writing tags. A file that gets one is as it was.
namespace cantorel::tag_failures {

foundation::Failure noFile(const QString &path);
// Of the extension "wav" or "aac".
foundation::Failure noTagsIn(const QString &path, const QString &extension);
// It holds another kind of sound than its name says, is broken, or of a form that can't be changed safely.
foundation::Failure noMovie(const QString &path);
foundation::Failure noMpeg(const QString &path);
foundation::Failure stillRecorded(const QString &path);
foundation::Failure notAllowed(const QString &path, int error);
// The disk is full, among others.
foundation::Failure notWritten(const QString &path, int error);
// Read back, it was not what had been written.
foundation::Failure notProved(const QString &path);
// Somebody else has changed or replaced it.
foundation::Failure changedMeanwhile(const QString &path);

} // namespace cantorel::tag_failures
