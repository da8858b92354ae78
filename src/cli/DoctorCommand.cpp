#include "app/start/Hardware.h"
#include "audio_device/ZQAudioKextKit.h"
#include "cli/Commands.h"
#include "lang/Lang.h"
#include "platform/foundation/ChildProcess.h"
#include "platform/media/Codecs.h"
#include "platform/media/DiskSpace.h"
#include "settings/AppSettings.h"
#include "util/ToolFile.h"

#include <QFile>

#include <unistd.h>

#include <CLI/CLI.hpp>

namespace cantorel {

namespace {

struct Check {
    QString name;
    bool ok = false;
    bool needed = false; // recording cannot work without it
    QString detail;      // what was found, or how to mend it
};

Check audioServer(const foundation::Result<std::unique_ptr<Hardware>> &hardware) {
    if (!hardware)
        return {QStringLiteral("audio server"), false, true, Lang::english(hardware.failure().sentence)};
    return {QStringLiteral("audio server"), true, true, hardware.value()->backendName()};
}

Check virtualDevice(bool hasHardware) {
    const bool there = hasHardware && ZQAudioKextKit::activateSVAD();
    return {QStringLiteral("virtual device"), there, false,
            there
                ? ZQAudioKextKit::getSystemSoundDeviceName()
                : QStringLiteral("Not installed, so system sound is recorded straight from the output; for full level "
                                 "whatever its volume, run: cantorel-cli driver install")};
}

Check microphone(bool hasHardware) {
    const QString name = hasHardware ? ZQAudioKextKit::getDefaultAudioInputName() : QString();
    return {QStringLiteral("microphone"), !name.isEmpty(), false,
            name.isEmpty() ? QStringLiteral("None found; connect one to record it.") : name};
}

// The default output, which a recording that was cut off may have left on the virtual device.
Check output(bool hasHardware) {
    const QString check = QStringLiteral("output");
    const QString name = hasHardware ? ZQAudioKextKit::getDefaultAudioOutputName() : QString();
    const QStringList real = hasHardware ? ZQAudioKextKit::getAllAudioOutputDeviceNames() : QStringList();
    if (name.isEmpty())
        return {check, false, false, QStringLiteral("None found; connect one to hear what is recorded.")};
    const hal::LeftDefault left = hal::HardwareSystem::leftDefault(hal::Direction::Output);
    if (name == ZQAudioKextKit::getSystemSoundDeviceName() && left != hal::LeftDefault::InUse)
        return {check, false, false,
                QStringLiteral("Programs play to the virtual device, so nothing is heard; run: cantorel-cli devices "
                               "default output \"%1\"")
                    .arg(real.value(0, QStringLiteral("NAME")))};
    if (left == hal::LeftDefault::GivenBack)
        return {check, true, false,
                QStringLiteral("%1, given back now: a recording that was cut off had left the virtual device as the "
                               "default")
                    .arg(name)};
    return {check, true, false, name};
}

Check recorder() {
    const auto codecs = media::loadCodecs();
    return {QStringLiteral("recorder"), codecs.ok(), true,
            codecs ? QStringLiteral("AAC coder loaded") : Lang::english(codecs.failure().sentence)};
}

Check converter() {
    const QString name = QStringLiteral("converter");
    const QString program = AppSettings::TessolarConverterPath();
    const auto run = foundation::ChildProcess::run(
        {program, {QStringLiteral("-hide_banner"), QStringLiteral("-encoders")}, {}, {}}, std::chrono::seconds(20));
    if (!run || !run.value().ending.succeeded())
        return {name, false, false,
                QStringLiteral("ffmpeg can't be run, so recordings stay M4A files; install the package ffmpeg.")};
    QStringList missing;
    for (const char *encoder : {"libmp3lame", "aac", "alac", "flac", "pcm_s16le"}) {
        if (!run.value().output.contains(QByteArray(" ") + encoder + " "))
            missing.append(QString::fromLatin1(encoder));
    }
    return {name, missing.isEmpty(), false,
            missing.isEmpty() ? QStringLiteral("ffmpeg with all encoders")
                              : QStringLiteral("ffmpeg lacks %1; install Debian's own package ffmpeg.")
                                    .arg(missing.join(QStringLiteral(", ")))};
}

Check folder() {
    const QString path = AppSettings::outputPath();
    const bool ok = ToolFile::createFolderAtPath(path) && ::access(QFile::encodeName(path), W_OK) == 0;
    return {QStringLiteral("folder"), ok, true,
            ok ? path
               : QStringLiteral("\"%1\" can't be written to; choose another with: cantorel-cli settings set "
                                "outputFolderPath FOLDER")
                     .arg(path)};
}

Check space() {
    const auto found = media::freeBytes(AppSettings::outputPath());
    if (!found)
        return {QStringLiteral("free space"), false, false,
                QStringLiteral("The system does not say how much there is; look before a long recording.")};
    const auto bytes = static_cast<qint64>(*found);
    const bool ok = bytes > 100 * 1024 * 1024;
    return {QStringLiteral("free space"), ok, false,
            ok ? QStringLiteral("%1 free").arg(ToolFile::fileSizeFormatterToString(bytes).trimmed())
               : QStringLiteral("Less than 100 MB free; make room, a long recording needs it.")};
}

Check environment(const char *name, std::initializer_list<const char *> variables, const char *advice) {
    for (const char *variable : variables) {
        if (!qEnvironmentVariableIsEmpty(variable))
            return {QString::fromLatin1(name), true, false, qEnvironmentVariable(variable)};
    }
    return {QString::fromLatin1(name), false, false, QString::fromLatin1(advice)};
}

Outcome doctor(const CommandSession &session) {
    const auto hardware = Hardware::open(session.backend, std::chrono::seconds(2));
    const Check checks[] = {
        audioServer(hardware),
        virtualDevice(hardware.ok()),
        microphone(hardware.ok()),
        output(hardware.ok()),
        recorder(),
        converter(),
        folder(),
        space(),
        environment("display", {"WAYLAND_DISPLAY", "DISPLAY"},
                    "No display, so there is no window; the command line works without one."),
        environment("D-Bus", {"DBUS_SESSION_BUS_ADDRESS"},
                    "No session bus, so the computer is not kept awake and folders can't be shown.")};
    bool works = true;
    for (const Check &check : checks) {
        works = works && (check.ok || !check.needed);
        const QString mark = check.ok       ? QStringLiteral("ok     ")
                             : check.needed ? QStringLiteral("FAILED ")
                                            : QStringLiteral("missing");
        session.answer({{QStringLiteral("check"), check.name},
                        {QStringLiteral("ok"), check.ok},
                        {QStringLiteral("needed"), check.needed},
                        {QStringLiteral("detail"), check.detail}},
                       QStringLiteral("%1  %2: %3").arg(mark, check.name, check.detail));
    }
    return works ? Outcome::done()
                 : Outcome::failed(QStringLiteral("Recording can't work here; mend what is marked FAILED above."));
}

} // namespace

void addDoctorCommand(CLI::App &root, CommandSession &session) {
    addVerb(root, session, "doctor", "Checks all that recording needs and says how to mend it", "doctor",
            [&session] { return doctor(session); });
}

} // namespace cantorel
