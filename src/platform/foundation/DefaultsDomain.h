#pragma once

#include "platform/foundation/DefaultsFile.h"
#include "platform/foundation/Guarded.h"
#include "platform/foundation/Result.h"

#include <QSet>
#include <QString>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

struct stat;

namespace cantorel::foundation {

// The user's defaults under one identifier: the XML property list "<identifier>.plist" in the configuration folder,
// with a volatile argument domain read before it and registered defaults read after it. Other processes may write the
// same file at any time: each save locks, rereads, changes its own keys and renames. Large data are read from the file
// only when they are asked for, and never kept. Any thread.
class DefaultsDomain {
public:
    // Told once of each different trouble with the file, on the thread that met it.
    using TroubleListener = std::function<void(const Failure &)>;

    // patience: how long a save waits for another program's.
    explicit DefaultsDomain(const QString &identifier, TroubleListener onTrouble = {},
                            std::chrono::milliseconds patience = std::chrono::seconds(2));

    const QString &identifier() const { return mIdentifier; }
    const QString &filePath() const { return mPath; }

    // The value of the argument domain, else the stored one, else the registered default, else a null value.
    QVariant object(const QString &key) const;
    // The value of the argument domain or the stored one.
    QVariant ownObject(const QString &key) const;
    // All that is stored, or set and not yet saved.
    QVariantMap storedObjects() const;

    // Sets a value, or removes the key with a null value, without saving it. False, and nothing changes, when a
    // property list cannot hold the value.
    bool setObject(const QString &key, const QVariant &value);
    // Saves what was set. False when the file cannot be read or written, or another program keeps it locked; what was
    // set then stays set for this process and is stored by the next save that succeeds.
    bool synchronize();
    // Forgets what was set for the key and could not be saved.
    void discard(const QString &key);

    void registerDefaults(const QVariantMap &defaults);
    // Holds for this process only and is never stored.
    void setArgument(const QString &key, const QVariant &value);

private:
    // What tells one state of the file from another.
    struct Stamp {
        bool exists = false;
        std::uint64_t inode = 0;
        std::int64_t modified = 0; // nanoseconds
        std::int64_t size = 0;
        bool operator==(const Stamp &) const = default;
    };
    struct State {
        QVariantMap arguments, pending, registered;
        DefaultsContent stored;
        std::optional<Stamp> seen; // of the file that stored was read from
        bool readable = true;
        QSet<QString> told;
        std::vector<Failure> untold;
    };

    static Stamp stampOf(const struct stat &status);
    Stamp stampOfFile() const;
    std::optional<QByteArray> largeObject(const QString &key) const;
    void refresh(State &state) const;
    void readFile(State &state) const;
    bool setAside(State &state, int file) const;
    bool save(State &state) const;
    bool writeFile(State &state, const DefaultsContent &content) const;
    void trouble(State &state, const Failure &failure) const;
    template <class Action> auto with(Action action) const;

    const QString mIdentifier;
    const QString mPath;
    const TroubleListener mOnTrouble;
    const std::chrono::milliseconds mPatience;
    mutable Guarded<State> mState;
};

} // namespace cantorel::foundation
