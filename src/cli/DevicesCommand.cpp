#include "app/start/Hardware.h"
#include "audio_device/ZQAudioKextKit.h"
#include "cli/Commands.h"

#include <QJsonArray>

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

QString joined(const QStringList &names) {
    return names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", "));
}

Outcome list(const CommandSession &session) {
    const auto hardware = Hardware::open(session.backend);
    if (!hardware)
        return Outcome::failed(hardware.failure().sentence);
    const bool hasVirtual = ZQAudioKextKit::activateSVAD();
    const QString backend = hardware.value()->backendName();
    const QString input = ZQAudioKextKit::getDefaultAudioInputName();
    const QString output = ZQAudioKextKit::getDefaultAudioOutputName();
    const QStringList inputs = ZQAudioKextKit::getAllAudioInputDeviceNames();
    const QStringList outputs = ZQAudioKextKit::getAllAudioOutputDeviceNames();
    const QString device = hasVirtual ? ZQAudioKextKit::getSystemSoundDeviceName() : QString();
    session.answer({{QStringLiteral("backend"), backend},
                    {QStringLiteral("defaultInput"), input.isEmpty() ? QJsonValue() : QJsonValue(input)},
                    {QStringLiteral("defaultOutput"), output.isEmpty() ? QJsonValue() : QJsonValue(output)},
                    {QStringLiteral("inputs"), QJsonArray::fromStringList(inputs)},
                    {QStringLiteral("outputs"), QJsonArray::fromStringList(outputs)},
                    {QStringLiteral("virtual"), hasVirtual ? QJsonValue(device) : QJsonValue()}},
                   QStringLiteral("Backend:        %1\nMicrophones:    %2\nOutputs:        %3\nDefault input:  %4\n"
                                  "Default output: %5\nVirtual device: %6")
                       .arg(backend, joined(inputs), joined(outputs), input.isEmpty() ? QStringLiteral("none") : input,
                            output.isEmpty() ? QStringLiteral("none") : output,
                            hasVirtual ? device : QStringLiteral("not installed (cantorel-cli driver install)")));
    return Outcome::done();
}

Outcome noSuchDevice(const QString &name) {
    return Outcome::failed(
        QStringLiteral("There is no such device as \"%1\"; \"cantorel-cli devices\" lists them.").arg(name));
}

Outcome setDefault(const CommandSession &session, const QString &direction, const QString &name) {
    const auto hardware = Hardware::open(session.backend);
    if (!hardware)
        return Outcome::failed(hardware.failure().sentence);
    (void)ZQAudioKextKit::activateSVAD(); // Makes the kit; whether there is a virtual device does not matter here.
    const bool done = direction == QLatin1String("input") ? ZQAudioKextKit::changeAudioInputDeviceWithName(name)
                                                          : ZQAudioKextKit::changeAudioOutputDeviceWithName(name);
    if (!done)
        return noSuchDevice(name);
    session.note(QStringLiteral("The default %1 is \"%2\".").arg(direction, name));
    return Outcome::done();
}

Outcome volume(const CommandSession &session, const QString &name, std::optional<double> wanted) {
    const auto hardware = Hardware::open(session.backend);
    if (!hardware)
        return Outcome::failed(hardware.failure().sentence);
    (void)ZQAudioKextKit::activateSVAD(); // Makes the kit.
    const QStringList known = ZQAudioKextKit::getAllAudioInputDeviceNames()
                              + ZQAudioKextKit::getAllAudioOutputDeviceNames()
                              + QStringList{ZQAudioKextKit::getSystemSoundDeviceName()};
    if (name.isEmpty() || !known.contains(name))
        return noSuchDevice(name);
    if (wanted && !ZQAudioKextKit::setVolume(static_cast<float>(*wanted), name))
        return Outcome::failed(QStringLiteral("\"%1\" has no volume that can be set.").arg(name));
    const double value = static_cast<double>(ZQAudioKextKit::getVolumeValueFromDeviceName(name));
    session.answer(
        {{QStringLiteral("name"), name}, {QStringLiteral("volume"), value < 0 ? QJsonValue() : QJsonValue(value)}},
        QStringLiteral("%1: %2").arg(name, value < 0 ? QStringLiteral("no volume") : QString::number(value, 'f', 2)));
    return Outcome::done();
}

} // namespace

void addDevicesCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string direction, name;
        std::optional<double> volume;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &devices = addVerb(root, session, "devices", "Lists the audio devices", "devices --json",
                                [&session] { return list(session); });
    devices.require_subcommand(0, 1);

    CLI::App &defaults = addVerb(devices, session, "default", "Switches the default device of a direction",
                                 "devices default output \"Built-in Output\"", [&session, arguments] {
                                     return setDefault(session, QString::fromStdString(arguments->direction),
                                                       QString::fromStdString(arguments->name));
                                 });
    defaults.add_option("DIRECTION", arguments->direction, "input or output")
        ->required()
        ->check(CLI::IsMember({"input", "output"}));
    defaults.add_option("NAME", arguments->name, "The device's name")->required();

    CLI::App &loudness = addVerb(
        devices, session, "volume", "Reads or sets a device's volume", "devices volume \"Built-in Output\" 0.5",
        [&session, arguments] { return volume(session, QString::fromStdString(arguments->name), arguments->volume); });
    loudness.add_option("NAME", arguments->name, "The device's name")->required();
    loudness.add_option("VOLUME", arguments->volume, "0 to 1; below 0.001 mutes")->check(CLI::Range(0.0, 1.0));
}

} // namespace cantorel
