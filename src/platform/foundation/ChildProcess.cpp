#include "platform/foundation/ChildProcess.h"

#include "platform/foundation/Background.h"

#include <QFile>
#include <QStandardPaths>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <utility>
#include <vector>

extern char **environ;

namespace cantorel::foundation {

namespace {

constexpr Clock::Duration kGrace = std::chrono::seconds(2);
constexpr qsizetype kPipeCapacity = 65536; // bytes, the system's own default
constexpr qsizetype kLongestLine = 65536;  // bytes

Clock::Duration now() { return std::chrono::steady_clock::now().time_since_epoch(); }

// Texts in the shape that execve wants; made before the fork, since a child of a threaded program may not allocate.
class Vector {
public:
    void add(const QByteArray &text) { mTexts.push_back(text); }
    char **pointers() {
        mPointers.clear();
        for (QByteArray &text : mTexts)
            mPointers.push_back(text.data());
        mPointers.push_back(nullptr);
        return mPointers.data();
    }

private:
    std::vector<QByteArray> mTexts;
    std::vector<char *> mPointers;
};

Vector environmentWith(const QStringList &additions) {
    Vector result;
    const auto replaced = [&](const QByteArray &entry) {
        const auto nameLength = entry.indexOf('=') + 1;
        return std::any_of(additions.begin(), additions.end(), [&](const QString &addition) {
            return nameLength > 0 && addition.toLocal8Bit().startsWith(entry.first(nameLength));
        });
    };
    for (char **entry = environ; *entry != nullptr; ++entry)
        if (const QByteArray text(*entry); !replaced(text))
            result.add(text);
    for (const QString &addition : additions)
        result.add(addition.toLocal8Bit());
    return result;
}

// Where a child reads from: the bytes, or nothing.
FileDescriptor inputOf(const QByteArray &bytes) {
    if (bytes.isEmpty())
        return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    FileDescriptor memory(::memfd_create("input", MFD_CLOEXEC));
    const auto length = static_cast<std::size_t>(bytes.size());
    if (memory.isOpen()
        && (::write(memory.get(), bytes.constData(), length) != bytes.size()
            || ::lseek(memory.get(), 0, SEEK_SET) != 0))
        memory.reset();
    return memory;
}

// The standard streams of a child.
struct Streams {
    int input, output, errors;
};

// Where the system shares the processor among sessions first, it is the child's own session that has to stand back.
void standBackAsSession() {
    standBack();
    const FileDescriptor session(::open("/proc/self/autogroup", O_WRONLY | O_CLOEXEC));
    if (session.isOpen() && ::write(session.get(), "10", 2) < 0)
        return; // Other systems have none.
}

// Runs in the child between fork and exec: only calls that are safe there. Tells the errno through the pipe.
[[noreturn]] void becomeProgram(const char *program, char **arguments, char **environment, const char *folder,
                                const Streams &streams, int failure, pid_t parent, bool inBackground) {
    ::setsid();
    if (inBackground)
        standBackAsSession();
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int number = 1; number < NSIG; ++number)
        ::signal(number, SIG_DFL);
    if (::getppid() == parent && ::dup2(streams.input, STDIN_FILENO) >= 0 && ::dup2(streams.output, STDOUT_FILENO) >= 0
        && ::dup2(streams.errors, STDERR_FILENO) >= 0 && (*folder == '\0' || ::chdir(folder) == 0))
        ::execve(program, arguments, environment);
    const int reason = errno;
    if (::write(failure, &reason, sizeof reason) < 0)
        ::_exit(126);
    ::_exit(127);
}

Failure cannotStart(const QString &program, int reason) {
    const QString why = QString::fromLocal8Bit(std::strerror(reason));
    return {QStringLiteral("The program \"%1\" cannot be started: %2.").arg(program, why),
            QStringLiteral("start of %1: %2").arg(program, why)};
}

} // namespace

ChildProcess::ChildProcess(pid_t pid, FileDescriptor output, FileDescriptor process)
    : mPid(pid), mOutput(std::move(output)), mProcess(std::move(process)) {}

Result<std::unique_ptr<ChildProcess>> ChildProcess::start(const Command &command) {
    const QString found =
        command.program.contains(QLatin1Char('/')) ? command.program : QStandardPaths::findExecutable(command.program);
    if (found.isEmpty())
        return cannotStart(command.program, ENOENT);

    int output[2], failure[2];
    if (::pipe2(output, O_CLOEXEC) != 0)
        return cannotStart(command.program, errno);
    FileDescriptor outputRead(output[0]), outputWrite(output[1]);
    if (::pipe2(failure, O_CLOEXEC) != 0)
        return cannotStart(command.program, errno);
    FileDescriptor failureRead(failure[0]), failureWrite(failure[1]);
    const FileDescriptor input = inputOf(command.input);
    if (!input.isOpen())
        return cannotStart(command.program, errno);
    const Streams streams{input.get(), outputWrite.get(), command.errorsApart ? STDERR_FILENO : outputWrite.get()};

    const QByteArray program = QFile::encodeName(found);
    const QByteArray folder = QFile::encodeName(command.folder);
    Vector arguments;
    arguments.add(program);
    for (const QString &argument : command.arguments)
        arguments.add(QFile::encodeName(argument));
    Vector environment = environmentWith(command.environment);
    char **const argumentPointers = arguments.pointers();
    char **const environmentPointers = environment.pointers();
    const pid_t parent = ::getpid();

    const pid_t pid = ::fork();
    if (pid < 0)
        return cannotStart(command.program, errno);
    if (pid == 0)
        becomeProgram(program.constData(), argumentPointers, environmentPointers, folder.constData(), streams,
                      failureWrite.get(), parent, command.inBackground);

    outputWrite.reset();
    failureWrite.reset();
    int reason = 0;
    if (::read(failureRead.get(), &reason, sizeof reason) == sizeof reason) {
        ::waitpid(pid, nullptr, 0);
        return cannotStart(command.program, reason);
    }
    ::fcntl(outputRead.get(), F_SETFL, O_NONBLOCK);
    FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    if (!process.isOpen()) {
        const int refused = errno;
        ::kill(-pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        return cannotStart(command.program, refused);
    }
    return std::unique_ptr<ChildProcess>(new ChildProcess(pid, std::move(outputRead), std::move(process)));
}

ChildProcess::~ChildProcess() {
    if (!mReaped.with([](bool reaped) { return reaped; })) {
        kill();
        reap();
    }
}

void ChildProcess::signalGroup(bool force) {
    // A child that is not reaped keeps its number, so the signal cannot meet a stranger.
    mReaped.with([&](bool reaped) {
        if (!reaped)
            ::kill(-mPid, force ? SIGKILL : SIGTERM);
    });
}

ChildProcess::Ending ChildProcess::reap() {
    int status = 0;
    siginfo_t ignored;
    while (::waitid(P_PID, static_cast<id_t>(mPid), &ignored, WEXITED | WNOWAIT) < 0 && errno == EINTR)
        continue;
    mReaped.with([&](bool &reaped) {
        ::waitpid(mPid, &status, 0);
        reaped = true;
    });
    Ending ending;
    if (WIFSIGNALED(status))
        ending.signal = WTERMSIG(status);
    else
        ending.exitStatus = WEXITSTATUS(status);
    return ending;
}

qsizetype ChildProcess::readChunk(const ChunkListener &listener) {
    QByteArray buffer(16384, Qt::Uninitialized);
    const auto count = ::read(mOutput.get(), buffer.data(), static_cast<size_t>(buffer.size()));
    if (count > 0) {
        buffer.truncate(count);
        listener(buffer);
    } else if (count == 0) {
        mOutput.reset();
    }
    return std::max<qsizetype>(count, 0);
}

ChildProcess::Ending ChildProcess::drain(const ChunkListener &listener, std::optional<Clock::Duration> limit) {
    std::optional<Clock::Duration> deadline;
    if (limit)
        deadline = now() + *limit;
    bool timedOut = false;
    while (true) {
        int timeout = -1;
        if (deadline) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - now()).count();
            timeout = static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000));
        }
        pollfd waiting[] = {{mProcess.get(), POLLIN, 0}, {mOutput.get(), POLLIN, 0}};
        ::poll(waiting, 2, timeout);
        if ((waiting[1].revents & (POLLIN | POLLHUP | POLLERR)) != 0)
            readChunk(listener);
        if (std::exchange(mGoesOn, false) && limit && !timedOut)
            deadline = now() + *limit;
        if ((waiting[0].revents & POLLIN) != 0) {
            // The pipe is emptied; output that a grandchild still writes is not waited for.
            qsizetype left = kPipeCapacity;
            for (qsizetype count = 1; mOutput.isOpen() && count > 0 && left > 0; left -= count)
                count = readChunk(listener);
            break;
        }
        if (deadline && now() >= *deadline) {
            signalGroup(timedOut);
            timedOut = true;
            deadline = now() + kGrace;
        }
    }
    if (timedOut)
        kill();
    Ending ending = reap();
    ending.timedOut = timedOut;
    return ending;
}

ChildProcess::Ending ChildProcess::wait(const LineListener &listener, std::optional<Clock::Duration> limit) {
    QByteArray rest;
    const auto emitLine = [&](const QByteArray &line) {
        if (!line.isEmpty() && listener)
            listener(line);
    };
    const auto ending = drain(
        [&](const QByteArray &chunk) {
            rest += chunk;
            qsizetype begin = 0;
            for (qsizetype at = rest.size() - chunk.size(); at < rest.size(); ++at) {
                if (rest[at] == '\r' || rest[at] == '\n') {
                    emitLine(rest.mid(begin, at - begin));
                    begin = at + 1;
                }
            }
            rest.remove(0, begin);
            if (rest.size() > kLongestLine)
                emitLine(std::exchange(rest, {}));
        },
        limit);
    emitLine(rest);
    return ending;
}

Result<ChildProcess::Finished> ChildProcess::run(const Command &command, std::optional<Clock::Duration> limit,
                                                 const std::stop_token &stop) {
    auto child = start(command);
    if (!child)
        return child.failure();
    const std::stop_callback ender(stop, [&] { child.value()->terminate(); });
    Finished finished;
    finished.ending = child.value()->drain([&](const QByteArray &chunk) { finished.output += chunk; }, limit);
    return finished;
}

} // namespace cantorel::foundation
