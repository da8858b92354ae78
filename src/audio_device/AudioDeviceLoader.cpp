#include "audio_device/AudioDeviceLoader.h"

#include "audio_device/AudioKextTools.h"
#include "audio_device/ZQAudioKextLog.h"
#include "platform/desktop/Services.h"
#include "util/ToolFile.h"

#include <QFile>

namespace cantorel {

bool AudioDeviceLoader::loadAudioDeviceWithSH() {
    try {
        return run(AudioKextTools::audioDriverInstallScriptPath());
    } catch (...) {
        ZQAudioKextLog::E(QStringLiteral("install %1 failed").arg(AudioKextTools::audioDriverName()));
        mFailure = QStringLiteral("The virtual device could not be installed.");
        return false;
    }
}

bool AudioDeviceLoader::loadSoundFlower() { return loadAudioDeviceWithSH(); }

bool AudioDeviceLoader::unloadAudioDeviceWithSH() { return run(AudioKextTools::audioDriverRemoveScriptPath()); }

bool AudioDeviceLoader::run(const QString &scriptPath) {
    mFailure =
        QStringLiteral("The driver or its script is missing from the program's resources; install Cantorel again.");
    const QString driverPath = AudioKextTools::audioDriverKextPath();
    if (!ToolFile::isFileExistsAtPath(driverPath))
        return false;
    // The scripts read each value as a line; what came behind a line feed would be a command.
    if (driverPath.contains(QLatin1Char('\n'))) {
        mFailure =
            QStringLiteral("The virtual device needs a program folder without a line break in its name; move the "
                           "program and try again.");
        return false;
    }
    ZQAudioKextLog::I(QStringLiteral("kextPath -----> %1").arg(driverPath));
    if (!ToolFile::isFileExistsAtPath(scriptPath))
        return false;
    ZQAudioKextLog::I(QStringLiteral("installPath ------> %1").arg(scriptPath));

    QFile file(scriptPath);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    // The placeholders are misspelt in the scripts as well. Spelling is fixed.
    QString script = QString::fromUtf8(file.readAll());
    script.replace(QStringLiteral("{dirverPath}"), driverPath);
    script.replace(QStringLiteral("{driverName}"), AudioKextTools::audioDriverName());
    script.replace(QStringLiteral("{dirverInstallPath}"), AudioKextTools::kextInstallPath());
    ZQAudioKextLog::I(QStringLiteral("The install sh Content --------> %1").arg(script));

    desktop::ScriptHost *host = desktop::InstalledServices::current().scripts.get();
    if (!host || !QFile(driverPath).open(QIODevice::ReadOnly))
        return false;
    const auto compiled = host->compile(script);
    if (!compiled) {
        mFailure = compiled.failure().sentence;
        return false;
    }
    ZQAudioKextLog::I(QStringLiteral("compileAndReturnError:\n%1").arg(QString()));
    const auto executed = host->execute(script);
    ZQAudioKextLog::I(
        QStringLiteral("executeAndReturnError\n%1").arg(executed ? QString() : executed.failure().detail));
    mFailure = executed ? foundation::Sentence() : executed.failure().sentence;
    return executed.ok();
}

} // namespace cantorel
