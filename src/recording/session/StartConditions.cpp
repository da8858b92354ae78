#include "recording/session/StartConditions.h"

#include "audio_device/ZQAudioKextKit.h"
#include "platform/hal/HardwareSystem.h"
#include "platform/media/DiskSpace.h"
#include "recording/session/RecordingJournal.h"
#include "recording/session/RecordingNames.h"
#include "recording/session/RecordingSessionView.h"
#include "recording/session/RecordingSpace.h"
#include "settings/AppSettings.h"

#include <QDir>
#include <QTemporaryFile>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr foundation::SentenceKey kCannotWriteTo("CannotWriteTo", "Folder");
constexpr foundation::SentenceKey kNoServer("NoServer");
constexpr foundation::SentenceKey kNoMicrophone("NoMicrophone");
constexpr foundation::SentenceKey kNotJoined("NotJoined");
constexpr foundation::SentenceKey kNameFirst("NameFirst");
constexpr foundation::SentenceKey kOvertaken("Overtaken");

const QString kOldAggregateKey =
    QStringLiteral("OldAggregateSubDeivceUIDs"); // Spelling is fixed: stored settings use it.

} // namespace

std::optional<Failure> recordingDeviceTrouble(RecordingSource source) {
    if (const auto reached = hal::HardwareSystem::reach(); !reached)
        return Failure{kNoServer(), reached.failure().detail};
    // What is remembered of the real devices follows the person's choice up to now. Without a virtual device system
    // sound is recorded from the output itself.
    (void)ZQAudioKextKit::activateSVAD();
    if (includesSystemSound(source) && !ZQAudioKextKit::systemSoundDevice())
        return Failure{kNoSystemSound(), QStringLiteral("no virtual device and no output")};
    if (includesMicrophone(source) && ZQAudioKextKit::getDefaultAudioInputName().isEmpty())
        return Failure{kNoMicrophone(), QStringLiteral("no default input")};
    if (source != RecordingSource::Both)
        return {};
    const QVariantMap saved = AppSettings::getFromUserDefaults_Object(kOldAggregateKey).toMap();
    const QVariantMap made = ZQAudioKextKit::renewAggregateDevice(saved);
    if (made.isEmpty())
        return Failure{kNotJoined(), QStringLiteral("createAggregateDevice failed")};
    if (made != saved)
        AppSettings::saveToUserDefaultsForKeyObjectValue(kOldAggregateKey, made);
    return {};
}

std::optional<Failure> recordingFolderTrouble(const QString &folder) {
    QTemporaryFile probe(folder + QStringLiteral("/.cantorel-XXXXXX")); // Rights alone do not tell.
    if (!QDir().mkpath(folder) || !probe.open())
        return Failure{kCannotWriteTo(folder), QStringLiteral("no recording can be written to %1").arg(folder)};
    if (recordingSecondsLeft(folder, AppSettings::getAudioFormat(), 0, 0) == 0)
        return Failure{media::kDiskFull(folder), QStringLiteral("the disk of %1 is full").arg(folder)};
    return {};
}

Result<void> StartConditions::check(RecordingSource source) {
    mLackedDevice = false;
    if (!mJournal.claim())
        return Failure{kAnotherRecorder(), QStringLiteral("the recorder lock is held")};
    if (const auto trouble = recordingFolderTrouble(AppSettings::outputPath()))
        return *trouble;
    const auto trouble = recordingDeviceTrouble(source);
    mLackedDevice = trouble.has_value();
    return trouble ? Result<void>(*trouble) : Result<void>();
}

Result<QString> StartConditions::meet(FileUnderWay &file, SessionPhase &phase) {
    const bool asksForName = !file.task && recordingIsNamedByHand();
    if (asksForName && phase == SessionPhase::Naming)
        return Failure{kNameFirst(), QStringLiteral("a name is being chosen")};
    file.source = recordingSource(AppSettings::getAudioType()).value_or(RecordingSource::SystemSound);
    if (const auto checked = check(file.source); !checked)
        return checked.failure();
    mView.stopPlayback();
    const SessionPhase before = phase;
    if (asksForName)
        phase = SessionPhase::Naming;
    const QString chosen = chosenRecordingPath(file.task);
    if (asksForName) { // Events were handled while the question stood there.
        if (phase != SessionPhase::Naming) {
            AppSettings::setOutputFileName({});
            return Failure{phase == SessionPhase::Idle ? foundation::Sentence() : kOvertaken(),
                           QStringLiteral("the start was overtaken while the name was chosen")};
        }
        phase = before;
        if (const auto checked = check(file.source); !checked)
            return checked.failure();
    }
    if (chosen.isEmpty())
        return Failure{{}, QStringLiteral("no name was chosen")};
    return freeRecordingPath(chosen);
}

} // namespace cantorel
