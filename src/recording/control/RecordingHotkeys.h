#pragma once

#include "platform/foundation/Sentence.h"
#include "recording/hotkeys/HotkeyManager.h"

#include <array>
#include <functional>
#include <memory>
#include <vector>

namespace cantorel {

// What hot keys do to recordings.
class RecordingHotkeyActions {
public:
    virtual ~RecordingHotkeyActions() = default;

    virtual bool isRecording() const = 0;
    virtual void onStartRecording() = 0; // the start control: ends a recording that runs
    virtual void stopRecording() = 0;
    virtual void onPauseRecording() = 0; // the pause control: pauses or resumes
};

// The three hot keys of the settings, from their registration to what they do. Owned by the application or a command;
// main thread.
class RecordingHotkeys {
public:
    // The actions outlive the hot keys. hotKeys: null where the desktop has none. trouble: told one sentence why a key
    // does not work, once for each reason; may be empty.
    RecordingHotkeys(RecordingHotkeyActions &actions, std::shared_ptr<desktop::HotKeys> hotKeys,
                     std::function<void(const foundation::Sentence &)> trouble = {});
    ~RecordingHotkeys();

    // Registers the keys if the settings enable them.
    void registerEnabled();
    void RegisteHotkey(); // Spelling is fixed.
    // Deliberate: asks a manager that holds nothing, so all registrations stay in force.
    void UnregisterHotkey();

    // How the person presses start, stop and pause; empty where it is unknown or not granted.
    std::array<QString, 3> triggers() const;

private:
    class Dispatch;

    const std::shared_ptr<Dispatch> mDispatch;
    const std::shared_ptr<desktop::HotKeys> mHotKeys;
    std::vector<std::unique_ptr<HotkeyManager>> mManagers; // all that have registered, since they stay in force
    std::array<quint32, 3> mIdentifiers{};                 // of the last one
};

} // namespace cantorel
