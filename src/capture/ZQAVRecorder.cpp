#include "capture/ZQAVRecorder.h"

#include "platform/hal/HardwareSystem.h"

#include <algorithm>
#include <cmath>

namespace cantorel {

namespace {

constexpr std::chrono::milliseconds kLevelInterval(100);
constexpr double kLevelScale = 20;

// The mean of channels, in dB.
struct MeanLevel {
    double sum = 0;
    int count = 0;

    void add(const media::AudioChannel &channel) {
        sum += channel.averagePowerLevel;
        ++count;
    }
    // Without channels this is deliberately not a number; the watchers of silence compare it so.
    float level() const { return static_cast<float>(std::pow(10.0, sum / count * 0.05) * kLevelScale); }
};

} // namespace

ZQAVRecorder::ZQAVRecorder() = default;

ZQAVRecorder::~ZQAVRecorder() = default;

bool ZQAVRecorder::initCaptureSession(QString *) {
    mCaptureSession = std::make_unique<media::CaptureSession>();
    for (const char *preset : {media::kSessionPresetHigh, media::kSessionPresetMedium, media::kSessionPresetLow}) {
        if (mCaptureSession->canSetSessionPreset(QString::fromLatin1(preset))) {
            mCaptureSession->setSessionPreset(QString::fromLatin1(preset));
            break;
        }
    }
    return true;
}

bool ZQAVRecorder::startRecording(const QUrl &, QString *) { return false; }

void ZQAVRecorder::stopRecording() {
    if (auto *output = fileOutput())
        output->stopRecording();
}

void ZQAVRecorder::pauseRecording(media::AudioFileOutput::Pause pause) {
    if (!isRecording())
        return;
    fileOutput()->pauseRecording(pause);
    bIsPaused = true;
}

void ZQAVRecorder::resumeRecording() {
    if (!bIsPaused || !isRecording())
        return;
    fileOutput()->resumeRecording();
    bIsPaused = false;
}

void ZQAVRecorder::startCaptureRuning() {
    if (mCaptureSession)
        mCaptureSession->startRunning();
}

void ZQAVRecorder::stopCaptureRuning() {
    if (mCaptureSession && mCaptureSession->isRunning())
        mCaptureSession->stopRunning();
}

bool ZQAVRecorder::isRecording() const { return fileOutput() && fileOutput()->isRecording(); }

media::RecordingCounts ZQAVRecorder::recordingCounts() const {
    return fileOutput() ? fileOutput()->recordingCounts() : media::RecordingCounts();
}

void ZQAVRecorder::setIsShowAudioLevel(bool flag) {
    mAudioLevelTimer.reset();
    if (!flag)
        return;
    mAudioLevelTimer = hal::HardwareSystem::clock().every(kLevelInterval, [this] { updateAudioLevelTimer(); });
}

void ZQAVRecorder::updateAudioLevelTimer() {
    MeanLevel all;
    for (const media::AudioChannel &channel : countedChannels())
        all.add(channel);
    delegate->captureUpdateAudioLevel(*this, all.level());
}

std::vector<float> ZQAVRecorder::sourceLevels() const {
    std::vector<MeanLevel> means;
    for (const media::AudioChannel &channel : countedChannels()) {
        means.resize(std::max(means.size(), static_cast<std::size_t>(channel.source) + 1));
        means[static_cast<std::size_t>(channel.source)].add(channel);
    }
    std::vector<float> levels;
    for (const MeanLevel &mean : means)
        levels.push_back(mean.level());
    return levels;
}

std::vector<media::AudioChannel> ZQAVRecorder::countedChannels() const {
    std::vector<media::AudioChannel> counted = audioChannels();
    std::erase_if(counted, [this](const media::AudioChannel &channel) { return !counts(channel); });
    return counted;
}

std::vector<media::AudioChannel> ZQAVRecorder::audioChannels() const {
    std::vector<media::AudioChannel> channels;
    if (const auto *output = fileOutput())
        for (const media::CaptureConnection &connection : output->connections())
            channels.insert(channels.end(), connection.audioChannels.begin(), connection.audioChannels.end());
    return channels;
}

void ZQAVRecorder::captureOutputDidStartRecording(media::AudioFileOutput &, const QString &path) {
    delegate->captureDidStartRecordingToOutputAtURL(*this, QUrl::fromLocalFile(path));
}

void ZQAVRecorder::captureOutputDidFinishRecording(media::AudioFileOutput &, const QString &path,
                                                   const media::RecordingCounts &counts,
                                                   const std::optional<foundation::Failure> &failure) {
    delegate->captureDidFinishRecordingToOutputAtURL(*this, QUrl::fromLocalFile(path), counts, failure);
}

} // namespace cantorel
