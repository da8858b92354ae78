#include "platform/media/movie/CameraFailures.h"

namespace cantorel::media::failures {

using foundation::Failure;

namespace {

constexpr foundation::SentenceKey kCameraBusy("CameraBusy", "Camera");
constexpr foundation::SentenceKey kCameraGone("CameraGone", "Camera");
constexpr foundation::SentenceKey kNotOpened("NotOpened", "Device");

} // namespace

Failure cameraBusy(const QString &name, const QString &detail) { return {kCameraBusy(name), detail}; }

Failure cameraGone(const QString &name, const QString &detail) { return {kCameraGone(name), detail}; }

Failure cameraNotOpened(const QString &name, const QString &detail) { return {kNotOpened(name), detail}; }

bool isCameraBusy(const Failure &failure) { return failure.sentence.key() == kCameraBusy(QString()).key(); }

} // namespace cantorel::media::failures
