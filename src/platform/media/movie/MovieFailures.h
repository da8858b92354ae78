#pragma once

#include "platform/foundation/Result.h"
#include "platform/media/movie/Picture.h"

#include <QString>

// Every sentence that is said when pictures or movies fail.
namespace cantorel::media::failures {

// No display server answers, or none that shows its pictures.
foundation::Failure noDisplay(const QString &detail = {});
// The one that was chosen is not there.
foundation::Failure displayMissing(const QString &detail);
// It went while it was recorded.
foundation::Failure displayGone(const QString &name);
foundation::Failure regionOutside(const QString &detail);
foundation::Failure cameraMissing(const QString &uniqueID);
// No coder takes a movie of that size.
foundation::Failure movieSize(PictureSize size);
foundation::Failure pictureCodecs(const QString &detail);
foundation::Failure pictureUnreadable(const QString &detail);
// The movie ended before its first picture.
foundation::Failure noPicture(const QString &path);

} // namespace cantorel::media::failures
