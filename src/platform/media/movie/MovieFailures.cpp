#include "platform/media/movie/MovieFailures.h"

#include "platform/foundation/Sentence.h"

namespace cantorel::media::failures {

using foundation::Failure;

namespace {

constexpr foundation::SentenceKey kNoDisplay("NoDisplay");
constexpr foundation::SentenceKey kDisplayMissing("DisplayMissing");
constexpr foundation::SentenceKey kDisplayGone("DisplayGone", "Name");
constexpr foundation::SentenceKey kRegionOutside("RegionOutside");
constexpr foundation::SentenceKey kCameraMissing("CameraMissing");
constexpr foundation::SentenceKey kMovieSize("MovieSize", "Size");
constexpr foundation::SentenceKey kPictureCodecs("PictureCodecs");
constexpr foundation::SentenceKey kPictureUnreadable("PictureUnreadable");
constexpr foundation::SentenceKey kNoPictureCame("NoPictureCame");

} // namespace

Failure noDisplay(const QString &detail) { return {kNoDisplay(), detail}; }

Failure displayMissing(const QString &detail) { return {kDisplayMissing(), detail}; }

Failure displayGone(const QString &name) { return {kDisplayGone(name), QStringLiteral("lost %1").arg(name)}; }

Failure regionOutside(const QString &detail) { return {kRegionOutside(), detail}; }

Failure cameraMissing(const QString &uniqueID) { return {kCameraMissing(), uniqueID}; }

Failure movieSize(PictureSize size) {
    const QString text = QStringLiteral("%1 x %2").arg(size.width).arg(size.height);
    return {kMovieSize(text), text};
}

Failure pictureCodecs(const QString &detail) { return {kPictureCodecs(), detail}; }

Failure pictureUnreadable(const QString &detail) { return {kPictureUnreadable(), detail}; }

Failure noPicture(const QString &path) { return {kNoPictureCame(), path}; }

} // namespace cantorel::media::failures
