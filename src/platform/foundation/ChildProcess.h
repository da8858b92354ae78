#pragma once

#include "platform/foundation/Clock.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Guarded.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QStringList>

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace cantorel::foundation {

// A program run beside ours, in a session of its own so that Ctrl-C does not reach it. Its standard input is the given
// bytes or empty; its standard output and error are joined in one pipe. Owned by the code that waits for it; needs no
// event loop. The child is sent SIGTERM when the THREAD that started it ends, so that it does not
// outlive our program.
class ChildProcess {
public:
    struct Command {
        QString program; // a path, or a name that is looked for in PATH
        QStringList arguments;
        QString folder;            // working folder; empty for ours
        QStringList environment;   // "NAME=VALUE", added to our own
        QByteArray input = {};     // all that it reads
        bool errorsApart = false;  // Standard error is ours, not part of the pipe.
        bool inBackground = false; // It takes only what nobody else wants of the processor and the disk.
    };

    struct Ending {
        int exitStatus = 0; // meaningful when signal is 0
        int signal = 0;     // the signal that ended it, or 0
        bool timedOut = false;

        bool succeeded() const { return exitStatus == 0 && signal == 0 && !timedOut; }
    };

    // Called with each line without its end; lines end at CR or LF, empty ones are left out. One that goes on beyond
    // 64 KiB comes in pieces.
    using LineListener = std::function<void(const QByteArray &line)>;

    // Fails when the program does not exist or cannot be executed.
    static Result<std::unique_ptr<ChildProcess>> start(const Command &command);

    // Kills what still runs, with all that it started.
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    // Drains the output until the child has ended, and reaps it. After the limit, or so long after goesOn(), the whole
    // group is asked to end, two seconds later killed. Once only; the calling thread calls the listener.
    Ending wait(const LineListener &listener = {}, std::optional<Clock::Duration> limit = {});

    // For the listener: the child has shown that it is not stuck.
    void goesOn() { mGoesOn = true; }

    // Asks the child and all that it started to end. Any thread, at any time, also when it has ended already.
    void terminate() { signalGroup(false); }
    void kill() { signalGroup(true); }

    pid_t pid() const { return mPid; }

    struct Finished {
        Ending ending;
        QByteArray output;
    };
    // Starts, waits, and answers the whole output as it came. A stop that is requested asks the child to end.
    static Result<Finished> run(const Command &command, std::optional<Clock::Duration> limit = {},
                                const std::stop_token &stop = {});

private:
    using ChunkListener = std::function<void(const QByteArray &chunk)>;

    ChildProcess(pid_t pid, FileDescriptor output, FileDescriptor process);
    Ending drain(const ChunkListener &listener, std::optional<Clock::Duration> limit);
    qsizetype readChunk(const ChunkListener &listener); // how many bytes there were
    void signalGroup(bool force);
    Ending reap();

    const pid_t mPid;
    FileDescriptor mOutput;
    FileDescriptor mProcess; // readable once the child has ended
    Guarded<bool> mReaped{false};
    bool mGoesOn = false; // since the limit was reckoned last
};

} // namespace cantorel::foundation
