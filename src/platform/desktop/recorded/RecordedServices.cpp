#include "platform/desktop/recorded/RecordedServices.h"

#include "platform/desktop/recorded/RecordedMediaControls.h"
#include "platform/desktop/recorded/RecordedNotifications.h"

namespace cantorel::desktop {

namespace {

using Record = std::shared_ptr<CallRecord>;

class RecordedScriptHost : public ScriptHost {
public:
    explicit RecordedScriptHost(Record record) : mRecord(std::move(record)) {}
    foundation::Result<void> compile(const QString &source) override {
        return mRecord->note(QStringLiteral("compile"), source);
    }
    foundation::Result<QString> execute(const QString &source) override {
        if (auto noted = mRecord->note(QStringLiteral("execute"), source); !noted)
            return noted.failure();
        return QString();
    }

private:
    const Record mRecord;
};

class RecordedPowerActivity : public PowerActivity {
public:
    explicit RecordedPowerActivity(Record record) : mRecord(std::move(record)) {}
    foundation::Result<void> hold(const QString &reason) override {
        return mRecord->note(QStringLiteral("hold"), reason);
    }
    void release() override { (void)mRecord->note(QStringLiteral("release")); } // cannot fail

private:
    const Record mRecord;
};

class RecordedSleepDelay : public SleepDelay {
public:
    explicit RecordedSleepDelay(Record record) : mRecord(std::move(record)) {}
    void hold(const QString &) override { note("hold machine", true); }
    void release() override { note("release machine", false); }

private:
    // Only what changes.
    void note(const char *name, bool holds) {
        if (std::exchange(mHolds, holds) != holds)
            (void)mRecord->note(QString::fromLatin1(name)); // nobody is told of a failure
    }

    const Record mRecord;
    bool mHolds = false;
};

class RecordedFileManagerReveal : public FileManagerReveal {
public:
    explicit RecordedFileManagerReveal(Record record) : mRecord(std::move(record)) {}
    foundation::Result<void> reveal(const QStringList &paths) override {
        return mRecord->note(QStringLiteral("reveal"), paths.join(QLatin1Char(' ')));
    }
    foundation::Result<void> open(const QUrl &url, const QString &withApplication) override {
        return mRecord->note(QStringLiteral("open"), (url.toString() + QLatin1Char(' ') + withApplication).trimmed());
    }

private:
    const Record mRecord;
};

class RecordedSoundPlayer : public SoundPlayer {
public:
    explicit RecordedSoundPlayer(Record record) : mRecord(std::move(record)) {}
    foundation::Result<void> play(const QString &waveFile) override {
        return mRecord->note(QStringLiteral("play"), waveFile);
    }

private:
    const Record mRecord;
};

} // namespace

QStringList CallRecord::calls() const {
    return mState.with([](const State &state) { return QStringList(state.calls.begin(), state.calls.end()); });
}

void CallRecord::failOn(const QString &name, const QString &detail) {
    mState.with([&](State &state) { state.failures.insert(name, detail); });
}

foundation::Result<void> CallRecord::note(const QString &name, const QString &argument) {
    return mState.with([&](State &state) -> foundation::Result<void> {
        state.calls.push_back(argument.isEmpty() ? name : name + QLatin1Char(' ') + argument);
        if (const auto failure = state.failures.constFind(name); failure != state.failures.constEnd())
            return foundation::Failure{*failure, *failure};
        return {};
    });
}

Services recordedServices(const std::shared_ptr<CallRecord> &record) {
    Services services;
    services.scripts = std::make_unique<RecordedScriptHost>(record);
    services.power = std::make_unique<RecordedPowerActivity>(record);
    services.sleep = std::make_unique<RecordedSleepDelay>(record);
    services.files = std::make_unique<RecordedFileManagerReveal>(record);
    services.media = std::make_unique<RecordedMediaControls>(record);
    services.notifications = std::make_unique<RecordedNotifications>(record);
    services.sounds = std::make_unique<RecordedSoundPlayer>(record);
    return services;
}

} // namespace cantorel::desktop
