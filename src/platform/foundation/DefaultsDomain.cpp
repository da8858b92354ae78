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
#include <cstring>

namespace cantorel::foundation {

namespace {

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

bool writeAll(int descriptor, const QByteArray &bytes) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const auto count = ::write(descriptor, bytes.data() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

} // namespace

DefaultsDomain::DefaultsDomain(const QString &identifier, TroubleListener onTrouble)
    : mIdentifier(identifier), mPath(pathOf(identifier)), mOnTrouble(std::move(onTrouble)) {}

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
    return with([&](State &state) {
        if (const auto argument = state.arguments.constFind(key); argument != state.arguments.constEnd())
            return *argument;
        if (const auto pending = state.pending.constFind(key); pending != state.pending.constEnd())
            return *pending;
        refresh(state);
        return state.stored.value(key);
    });
}

QVariantMap DefaultsDomain::storedObjects() const {
    return with([&](State &state) {
        refresh(state);
        QVariantMap all = state.stored;
        for (auto entry = state.pending.begin(); entry != state.pending.end(); ++entry) {
            if (entry.value().isValid())
                all.insert(entry.key(), entry.value());
            else
                all.remove(entry.key());
        }
        return all;
    });
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

DefaultsDomain::Stamp DefaultsDomain::stampOfFile() const {
    struct stat status = {};
    if (::stat(QFile::encodeName(mPath).constData(), &status) != 0)
        return {};
    return {true, status.st_ino, std::int64_t(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec,
            status.st_size};
}

void DefaultsDomain::refresh(State &state) const {
    const Stamp stamp = stampOfFile();
    if (state.seen == stamp)
        return;
    state.stored.clear();
    state.readable = true;
    if (stamp.exists)
        readFile(state);
    state.seen = stamp;
}

void DefaultsDomain::readFile(State &state) const {
    QFile file(mPath);
    QByteArray content;
    // Opening a pipe would wait for a writer.
    const bool isFile = QFileInfo(mPath).isFile();
    if (!isFile || !file.open(QIODevice::ReadOnly)
        || (content = file.readAll(), file.error() != QFileDevice::NoError)) {
        state.readable = false;
        const QString why = isFile ? file.errorString() : QStringLiteral("it is no file");
        trouble(state, {QStringLiteral("The settings file \"%1\" cannot be read: %2. The defaults are used and nothing "
                                       "is saved; mend its rights.")
                            .arg(mPath, why),
                        QStringLiteral("settings not read from %1: %2").arg(mPath, why)});
        return;
    }
    auto parsed = parsePropertyList(content);
    if (parsed && parsed.value().typeId() == QMetaType::QVariantMap) {
        state.stored = parsed.value().toMap();
        return;
    }
    // The next save may replace the damaged file only if a copy of it stands beside it.
    state.readable = setAside(state, content);
}

bool DefaultsDomain::setAside(State &state, const QByteArray &content) const {
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
        const bool done = written.open(QIODevice::WriteOnly | QIODevice::NewOnly)
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
    while (::flock(lock.get(), LOCK_EX) != 0 && errno == EINTR)
        continue;

    refresh(state);
    if (!state.readable)
        return false;
    QVariantMap content = state.stored;
    bool changes = false;
    for (auto entry = state.pending.begin(); entry != state.pending.end(); ++entry) {
        const QVariant before = content.value(entry.key());
        changes = changes || before.metaType() != entry.value().metaType() || before != entry.value();
        if (entry.value().isValid())
            content.insert(entry.key(), entry.value());
        else
            content.remove(entry.key());
    }
    if (changes) {
        if (!writeFile(state, content))
            return false;
        state.stored = content;
        state.seen = stampOfFile();
    }
    state.pending.clear();
    return true;
}

bool DefaultsDomain::writeFile(State &state, const QVariantMap &content) const {
    const QByteArray target = QFile::encodeName(mPath);
    const QByteArray temporary = target + '.' + QUuid::createUuid().toByteArray(QUuid::Id128) + ".new";
    struct stat status = {};
    const mode_t mode = ::stat(target.constData(), &status) == 0 ? status.st_mode & 0777 : 0600;

    FileDescriptor file(::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    const bool done = file.isOpen() && ::fchmod(file.get(), mode) == 0 && writeAll(file.get(), propertyListXml(content))
                      && ::fsync(file.get()) == 0 && ::rename(temporary.constData(), target.constData()) == 0;
    if (!done) {
        trouble(state, cannotWrite(mPath, reasonOf(errno)));
        ::unlink(temporary.constData());
    }
    return done;
}

} // namespace cantorel::foundation
