#include "recording/control/RecordingHotkeys.h"

#include "log/CommLog.h"
#include "log/GuardedAction.h"
#include "settings/AppSettings.h"

#include <algorithm>
#include <utility>

namespace cantorel {

class RecordingHotkeys::Dispatch : public HotkeyTarget {
public:
    explicit Dispatch(RecordingHotkeyActions &actions) : mActions(actions) {}

    // Compared with the settings of now: a key of a text that they have no more does nothing.
    void pressedHotkey(const QString &hotkey) override {
        (void)guarded("pressedHotkey", [&] {
            if (hotkey == AppSettings::hotkeyStartRecording())
                mActions.onStartRecording();
            else if (hotkey == AppSettings::hotkeyStopRecording())
                mActions.stopRecording();
            else if (hotkey == AppSettings::hotkeyPauseRecording() && mActions.isRecording())
                mActions.onPauseRecording();
        });
    }

private:
    RecordingHotkeyActions &mActions;
};

RecordingHotkeys::RecordingHotkeys(RecordingHotkeyActions &actions, std::shared_ptr<desktop::HotKeys> hotKeys,
                                   std::function<void(const foundation::Sentence &)> trouble)
    : mDispatch(std::make_shared<Dispatch>(actions)), mHotKeys(std::move(hotKeys)) {
    if (!mHotKeys)
        return;
    mHotKeys->trouble = [trouble = std::move(trouble)](const foundation::Failure &failure) {
        CommLog::W(failure.detail);
        if (trouble)
            trouble(failure.sentence);
    };
}

RecordingHotkeys::~RecordingHotkeys() {
    if (mHotKeys)
        mHotKeys->trouble = {};
}

void RecordingHotkeys::registerEnabled() {
    if (AppSettings::getEnableHotkeys())
        RegisteHotkey();
}

void RecordingHotkeys::RegisteHotkey() {
    const std::array<std::pair<const char *, QString>, 3> keys{
        {{"hotkeyStartRecording", AppSettings::hotkeyStartRecording()},
         {"hotkeyStopRecording", AppSettings::hotkeyStopRecording()},
         {"hotkeyPauseRecording", AppSettings::hotkeyPauseRecording()}}};
    auto manager = std::make_unique<HotkeyManager>(mHotKeys);
    std::transform(keys.begin(), keys.end(), mIdentifiers.begin(),
                   [&](const auto &key) { return manager->bind(key.second, mDispatch, &HotkeyTarget::pressedHotkey); });
    mManagers.push_back(std::move(manager));
    for (const auto &[name, text] : keys)
        Log(QStringLiteral("RegisterHotkey -> %1: %2").arg(QString::fromLatin1(name), text));
}

void RecordingHotkeys::UnregisterHotkey() {
    HotkeyManager manager(mHotKeys); // Deliberately a fresh one, which holds nothing to unbind.
    for (const quint32 identifier : mIdentifiers)
        manager.unbind(identifier);
    Log(QStringLiteral("UnregisterHotkey"));
}

std::array<QString, 3> RecordingHotkeys::triggers() const {
    std::array<QString, 3> triggers;
    if (!mManagers.empty())
        std::transform(mIdentifiers.begin(), mIdentifiers.end(), triggers.begin(),
                       [&](quint32 identifier) { return mManagers.back()->trigger(identifier); });
    return triggers;
}

} // namespace cantorel
