#include "platform/hal/pipewire/GuardChild.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

extern char **environ;

namespace cantorel::hal {

namespace {

// Reads until a word comes (disarmed) or the pipe ends (the program is gone); a log-out, which signals both at once,
// does not end it before. Arguments: key of the choice, stand-in, the device that shall be in force, "set" or "clear",
// and the choice. The command line tool of the server does the rest, and is not waited for without end. What was chosen
// is put back only after its device is in force, or the server might stay with the stand-in.
constexpr const char *kScript = R"SH(
trap '' HUP INT TERM
read -r word && exit 0
names() {
    case "$(timeout -s KILL 5 pw-metadata 0 "$1" 2>/dev/null)" in
    *"\"name\":$2"*|*"\"name\": $2"*) ;;
    *) false ;;
    esac
}
choose() { timeout -s KILL 5 pw-metadata 0 "$1" "{\"name\":$2}" Spa:String:JSON; }
names "$1" "$2" || exit 0
if [ "$3" != '""' ]; then
    choose "$1" "$3"
    tries=0
    until names "default.${1#default.configured.}" "$3" || [ "$tries" -eq 40 ]; do
        sleep 0.05
        tries=$((tries + 1))
    done
fi
if [ "$4" = clear ]; then
    timeout -s KILL 5 pw-metadata -d 0 "$1"
elif [ "$5" != "$3" ]; then
    choose "$1" "$5"
fi
)SH";

QByteArray quoted(const QString &text) {
    const QByteArray list = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return list.sliced(1, list.size() - 2); // without the brackets
}

} // namespace

bool GuardChild::arm(Direction direction, const QString &standIn, const DefaultSetting &before) {
    disarm();
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return false;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);

    QByteArray key =
        direction == Direction::Input ? "default.configured.audio.source" : "default.configured.audio.sink";
    QByteArray ours = quoted(standIn);
    QByteArray device = quoted(before.device);
    QByteArray order = before.choice ? "set" : "clear";
    QByteArray choice = quoted(before.choice.value_or(QString()));
    QByteArray script(kScript);
    char shell[] = "/bin/sh", flag[] = "-c", name[] = "cantorel-guard";
    char *arguments[] = {shell,       flag,          script.data(), name,          key.data(),
                         ours.data(), device.data(), order.data(),  choice.data(), nullptr};
    const int status = posix_spawn(&mPid, shell, &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    if (status != 0) {
        close(ends[1]);
        mPid = -1;
        return false;
    }
    mPipe = ends[1];
    return true;
}

void GuardChild::disarm() {
    if (mPid < 0)
        return;
    // A child that has died already can't be written to; nothing is lost with it.
    const char word[] = "done\n";
    while (write(mPipe, word, sizeof word - 1) < 0 && errno == EINTR) {
    }
    close(mPipe);
    while (waitpid(mPid, nullptr, 0) < 0 && errno == EINTR) {
    }
    mPid = -1;
    mPipe = -1;
}

} // namespace cantorel::hal
