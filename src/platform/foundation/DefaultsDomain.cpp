#include "platform/foundation/DefaultsDomain.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/PropertyList.h"
#include "platform/foundation/SearchPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace cantorel::foundation {

namespace {

constexpr int kAttempts = 5;
constexpr std::chrono::milliseconds kLockInterval(5);

// A file that is a link stays one: what it names is read and replaced.
QString pathOf(const QString &identifier) {
    const QString path = configurationFolder() + QLatin1Char('/') + identifier + QStringLiteral(".plist");
    const QFileInfo info(path);
    return info.isSymLink() && info.exists() ? info.canonicalFilePath() : path;
}

QString reasonOf(int number) { return QString::fromLocal8Bit(std::strerror(number)); }

Failure cannotWrite(const QString &path, const QString &why) {
    return {QStringLiteral("The settings cannot be saved to \"%1\": %2. Check the folder's rights and free space.")
                .arg(path, why),
            QStringLiteral("settings not saved to %1: %2").arg(path, why)};
}

bool lockWithin(int file, std::chrono::milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(kLockInterval);
    }
    return true;
}

} // namespace

DefaultsDomain::DefaultsDomain(const QString &identifier, TroubleListener onTrouble, std::chrono::milliseconds patience)
    : mIdentifier(identifier), mPath(pathOf(identifier)), mOnTrouble(std::move(onTrouble)), mPatience(patience) {}

// Runs the action on the locked state, then tells outside the lock what went wrong in it.
template <class Action> auto DefaultsDomain::with(Action action) const {
    std::vector<Failure> untold;
    const auto result = mState.with([&](State &state) {
        const auto answer = action(state);
        untold.swap(state.untold);
        return answer;
    });
    if (mOnTrouble)
        for (const Failure &failure : untold)
            mOnTrouble(failure);
    return result;
}

QVariant DefaultsDomain::object(const QString &key) const {
    if (const QVariant own = ownObject(key); own.isValid())
        return own;
    return mState.with([&](State &state) { return state.registered.value(key); });
}

QVariant DefaultsDomain::ownObject(const QString &key) const {
    bool isLarge = false;
    const QVariant value = with([&](State &state) {
        if (const auto argument = state.arguments.constFind(key); argument != state.arguments.constEnd())
            return *argument;
        if (const auto pending = state.pending.constFind(key); pending != state.pending.constEnd())
            return *pending;
        refresh(state);
        isLarge = state.stored.large.contains(key);
        return state.stored.values.value(key);
    });
    if (!isLarge)
        return value;
    const auto data = largeObject(key);
    return data ? QVariant(*data) : QVariant();
}

// Reads outside the lock, which others wait for, and so again where the file has changed meanwhile.
std::optional<QByteArray> DefaultsDomain::largeObject(const QString &key) const {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const FileDescriptor file(::open(QFile::encodeName(mPath).constData(), O_RDONLY | O_CLOEXEC));
        struct stat status = {};
        if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
            return {};
        LargeData where;
        const bool isSame = with([&](State &state) {
            refresh(state);
            where = state.stored.large.value(key);
            return state.seen == stampOf(status);
        });
        if (isSame && where.length == 0)
            return {};
        if (auto data = isSame ? readLargeData(file.get(), where) : std::nullopt)
            return data;
    }
    return {};
}

QVariantMap DefaultsDomain::storedObjects() const {
    QStringList large;
    QVariantMap all = with([&](State &state) {
        refresh(state);
        QVariantMap stored = state.stored.values;
        large = state.stored.large.keys();
        for (auto entry = state.pending.begin(); entry != state.pending.end(); ++entry) {
            large.removeAll(entry.key());
            if (entry.value().isValid())
                stored.insert(entry.key(), entry.value());
            else
                stored.remove(entry.key());
        }
        return stored;
    });
    for (const QString &key : std::as_const(large))
        if (const auto data = largeObject(key))
            all.insert(key, *data);
    return all;
}

bool DefaultsDomain::setObject(const QString &key, const QVariant &value) {
    if (value.isValid() && !isPropertyListValue(value))
        return false;
    return with([&](State &state) {
        state.pending.insert(key, value);
        return true;
    });
}

bool DefaultsDomain::synchronize() {
    return with([&](State &state) { return save(state); });
}

void DefaultsDomain::discard(const QString &key) {
    mState.with([&](State &state) { state.pending.remove(key); });
}

void DefaultsDomain::registerDefaults(const QVariantMap &defaults) {
    mState.with([&](State &state) { state.registered.insert(defaults); });
}

void DefaultsDomain::setArgument(const QString &key, const QVariant &value) {
    mState.with([&](State &state) { state.arguments.insert(key, value); });
}

void DefaultsDomain::trouble(State &state, const Failure &failure) const {
    if (!state.told.contains(failure.detail)) {
        state.told.insert(failure.detail);
        state.untold.push_back(failure);
    }
}

DefaultsDomain::Stamp DefaultsDomain::stampOf(const struct stat &status) {
    return {true, status.st_ino, std::int64_t(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec,
            status.st_size};
}

DefaultsDomain::Stamp DefaultsDomain::stampOfFile() const {
    struct stat status = {};
    return ::stat(QFile::encodeName(mPath).constData(), &status) == 0 ? stampOf(status) : Stamp{};
}

void DefaultsDomain::refresh(State &state) const {
    const Stamp stamp = stampOfFile();
    if (state.seen == stamp)
        return;
    state.stored = {};
    state.readable = true;
    if (stamp.exists)
        readFile(state);
    state.seen = stamp;
}

void DefaultsDomain::readFile(State &state) const {
    // Opening a pipe would wait for a writer.
    const bool isFile = QFileInfo(mPath).isFile();
    const FileDescriptor file(isFile ? ::open(QFile::encodeName(mPath).constData(), O_RDONLY | O_CLOEXEC) : -1);
    auto content = file.isOpen() ? readDefaults(file.get()) : std::nullopt;
    if (!content) {
        state.readable = false;
        const QString why = isFile ? reasonOf(errno) : QStringLiteral("it is no file");
        trouble(state, {QStringLiteral("The settings file \"%1\" cannot be read: %2. The defaults are used and nothing "
                                       "is saved; mend its rights.")
                            .arg(mPath, why),
                        QStringLiteral("settings not read from %1: %2").arg(mPath, why)});
        return;
    }
    if (*content)
        state.stored = std::move(*content).value();
    else // The next save may replace the damaged file only if a copy of it stands beside it.
        state.readable = setAside(state, file.get());
}

bool DefaultsDomain::setAside(State &state, int file) const {
    QFile damaged;
    ::lseek(file, 0, SEEK_SET);
    const QByteArray content = damaged.open(file, QIODevice::ReadOnly) ? damaged.readAll() : QByteArray();
    for (int number = 1;; ++number) {
        const QString copy =
            mPath + QStringLiteral(".damaged") + (number == 1 ? QString() : QStringLiteral("-%1").arg(number));
        QFile existing(copy);
        if (existing.exists()) {
            if (existing.open(QIODevice::ReadOnly) && existing.readAll() == content)
                return true;
            continue;
        }
        QFile written(copy);
        const bool done = written.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner)
                          && written.write(content) == content.size() && written.flush();
        if (!done)
            written.remove();
        const QString rest = done ? QStringLiteral("a copy is kept as \"%1\"").arg(copy)
                                  : QStringLiteral("it cannot be copied aside, so nothing is saved");
        trouble(state,
                {QStringLiteral("The settings file \"%1\" is damaged; the defaults are used and %2.").arg(mPath, rest),
                 QStringLiteral("settings in %1 are damaged; %2").arg(mPath, rest)});
        return done;
    }
}

bool DefaultsDomain::save(State &state) const {
    if (state.pending.isEmpty()) {
        refresh(state);
        return state.readable;
    }
    const QString folder = QFileInfo(mPath).path();
    if (!QDir().mkpath(folder)) {
        trouble(state, cannotWrite(mPath, QStringLiteral("the folder cannot be made")));
        return false;
    }
    // The lock is a file of its own, since the list itself is replaced at each save.
    const QByteArray lockName =
        QFile::encodeName(folder + QStringLiteral("/.") + mIdentifier + QStringLiteral(".lock"));
    const FileDescriptor lock(::open(lockName.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock.isOpen()) {
        trouble(state, cannotWrite(mPath, reasonOf(errno)));
        return false;
    }
    if (!lockWithin(lock.get(), mPatience)) {
        trouble(state, cannotWrite(mPath, QStringLiteral("another program keeps it locked")));
        return false;
    }

    refresh(state);
    if (!state.readable)
        return false;
    DefaultsContent content = state.stored;
    bool changes = false;
    for (auto entry = state.pending.begin(); entry != state.pending.end(); ++entry) {
        const QVariant before = content.values.value(entry.key());
        changes = content.large.remove(entry.key()) > 0 || changes || before.metaType() != entry.value().metaType()
                  || before != entry.value();
        if (entry.value().isValid())
            content.values.insert(entry.key(), entry.value());
        else
            content.values.remove(entry.key());
    }
    if (changes && !writeFile(state, content))
        return false;
    state.pending.clear();
    return true;
}

bool DefaultsDomain::writeFile(State &state, const DefaultsContent &content) const {
    const QByteArray target = QFile::encodeName(mPath);
    const QByteArray temporary = target + '.' + QUuid::createUuid().toByteArray(QUuid::Id128) + ".new";
    const FileDescriptor old(content.large.isEmpty() ? -1 : ::open(target.constData(), O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    const mode_t mode = ::stat(target.constData(), &status) == 0 ? status.st_mode & 0777 : 0600;

    const FileDescriptor file(::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    std::optional<DefaultsContent> written;
    if (file.isOpen() && ::fchmod(file.get(), mode) == 0)
        written = writeDefaults(file.get(), content, old.get());
    // The copy is what was read: no program that ignores our lock has changed the file meanwhile.
    if (written && old.isOpen() && (::fstat(old.get(), &status) != 0 || state.seen != stampOf(status))) {
        errno = EAGAIN;
        written.reset();
    }
    if (!written || ::fsync(file.get()) != 0 || ::rename(temporary.constData(), target.constData()) != 0) {
        trouble(state, cannotWrite(mPath, reasonOf(errno)));
        ::unlink(temporary.constData());
        return false;
    }
    state.stored = *std::move(written);
    state.seen = ::fstat(file.get(), &status) == 0 ? std::optional(stampOf(status)) : std::nullopt;
    return true;
}

} // namespace cantorel::foundation
