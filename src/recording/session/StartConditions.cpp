#include "recording/session/StartConditions.h"

#include "audio_device/ZQAudioKextKit.h"
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

const QString kOldAggregateKey =
    QStringLiteral("OldAggregateSubDeivceUIDs"); // Spelling is fixed: stored settings use it.

std::optional<Failure> folderTrouble(const QString &folder) {
    QTemporaryFile probe(folder + QStringLiteral("/.cantorel-XXXXXX")); // Rights alone do not tell.
    if (!QDir().mkpath(folder) || !probe.open())
        return Failure{
            QStringLiteral("Recordings can't be written to \"%1\"; choose a folder that you may write to.").arg(folder),
            QStringLiteral("no recording can be written to %1").arg(folder)};
    if (recordingSecondsLeft(folder, AppSettings::getAudioFormat(), 0, 0) == 0)
        return Failure{
            QStringLiteral("The disk that holds \"%1\" is full; make room or choose another folder.").arg(folder),
            QStringLiteral("the disk of %1 is full").arg(folder)};
    return {};
}

std::optional<Failure> deviceTrouble(RecordingSource source) {
    // What is remembered of the real devices follows the person's choice up to now.
    const bool hasVirtual = ZQAudioKextKit::activateSVAD();
    if (includesSystemSound(source) && !hasVirtual)
        return Failure{QStringLiteral("There is no virtual device to record system sound from; start the window anew "
                                      "and have it installed, or run: cantorel-cli driver install"),
                       QStringLiteral("no virtual device")};
    if (includesMicrophone(source) && ZQAudioKextKit::getDefaultAudioInputName().isEmpty())
        return Failure{QStringLiteral("There is no microphone; connect one, or record system sound alone."),
                       QStringLiteral("no default input")};
    if (source != RecordingSource::Both)
        return {};
    const QVariantMap saved = AppSettings::getFromUserDefaults_Object(kOldAggregateKey).toMap();
    if (!ZQAudioKextKit::isAggregateDeviceChanged(saved))
        return {};
    ZQAudioKextKit::destroyAggregateDevice();
    const QVariantMap made = ZQAudioKextKit::createAggregateDevice();
    if (made.isEmpty())
        return Failure{
            QStringLiteral("Microphone and system sound could not be joined to one device; try again, or record "
                           "one of them alone."),
            QStringLiteral("createAggregateDevice failed")};
    AppSettings::saveToUserDefaultsForKeyObjectValue(kOldAggregateKey, made);
    return {};
}

} // namespace

Result<void> StartConditions::check(RecordingSource source) {
    mLackedDevice = false;
    if (!mJournal.claim())
        return Failure{QStringLiteral("Another Cantorel is recording already; stop that one first."),
                       QStringLiteral("the recorder lock is held")};
    if (const auto trouble = folderTrouble(AppSettings::outputPath()))
        return *trouble;
    const auto trouble = deviceTrouble(source);
    mLackedDevice = trouble.has_value();
    return trouble ? Result<void>(*trouble) : Result<void>();
}

Result<QString> StartConditions::meet(FileUnderWay &file, SessionPhase &phase) {
    const bool asksForName = !file.task && recordingIsNamedByHand();
    if (asksForName && phase == SessionPhase::Naming)
        return Failure{QStringLiteral("The recording waits for its name; choose one first."),
                       QStringLiteral("a name is being chosen")};
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
            return Failure{phase == SessionPhase::Idle
                               ? QString()
                               : QStringLiteral("Another recording was begun while the name was chosen."),
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
