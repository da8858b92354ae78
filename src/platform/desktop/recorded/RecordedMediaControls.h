#pragma once

#include "platform/desktop/MediaControls.h"
#include "platform/desktop/recorded/RecordedServices.h"

namespace cantorel::desktop {

// A desktop in software that knows the player: notes "media offer", "media withdraw", "media jump". Its fields
// hold what was shown and the commands that it may use.
class RecordedMediaControls : public MediaControls {
public:
    explicit RecordedMediaControls(std::shared_ptr<CallRecord> record) : mRecord(std::move(record)) {}

    MediaCommands *commands = nullptr; // while they are offered
    MediaState state;

    foundation::Result<void> offer(MediaCommands &offered) override {
        commands = &offered;
        return mRecord->note(QStringLiteral("media offer"));
    }
    void withdraw() override {
        if (std::exchange(commands, nullptr) != nullptr)
            (void)mRecord->note(QStringLiteral("media withdraw")); // cannot fail
    }
    void show(const MediaState &shown) override { state = shown; }
    void positionDidJump() override { (void)mRecord->note(QStringLiteral("media jump")); } // cannot fail

private:
    const std::shared_ptr<CallRecord> mRecord;
};

} // namespace cantorel::desktop
