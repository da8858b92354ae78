#include "convert/Converter.h"

#include "platform/media/DiskSpace.h"
#include "platform/media/SoundFacts.h"

#include <QFileInfo>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <future>
#include <utility>

namespace cantorel {

using foundation::ChildProcess;
using foundation::HiddenFile;

namespace {

constexpr qsizetype kKept = 16384;                // bytes of the converter's text
constexpr double kRecordedBytesPerSecond = 16000; // well below what the recorder writes
constexpr std::uint64_t kNoRoom = 65536;          // bytes; a disk with fewer has refused some
constexpr int kProgramMissing = 127;              // the exit status by which shells and the launcher tell it

// The last line that says anything of its own, without the converter's marks before it.
QString reasonIn(const QByteArray &said) {
    const auto lines = said.split('\n');
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        QByteArray text = line->trimmed();
        if (text.isEmpty() || text.startsWith("Conversion failed") || text.startsWith("video:"))
            continue;
        if (text.startsWith('['))
            text = text.mid(text.indexOf("] ") + 1).trimmed();
        return QString::fromUtf8(text.left(300));
    }
    return {};
}

ConvertFault faultOf(const Converter &converter, const Converter::Run &run, const QStringList &inputs) {
    const auto says = [&](const char *text) { return run.said.contains(text); };
    if (converter.stop.stop_requested())
        return ConvertFault::Stopped;
    for (const QString &input : inputs)
        if (!QFileInfo::exists(input))
            return ConvertFault::SourceGone;
        else if (!QFileInfo(input).isReadable())
            return ConvertFault::NotAllowed;
    if (run.ending.timedOut)
        return ConvertFault::TimedOut;
    if (run.ending.exitStatus == kProgramMissing)
        return ConvertFault::NoProgram;
    if (says("No space left on device"))
        return ConvertFault::NoRoom;
    if (run.ending.signal)
        return ConvertFault::Signalled;
    if (says("Unknown encoder") || says("Unable to find a suitable output format"))
        return ConvertFault::NoEncoder;
    const bool isUnknown =
        says(": Invalid data found when processing input") || says(": Invalid argument") || says(": End of file");
    if (says("does not contain any stream") || (!run.isOpened && isUnknown))
        return ConvertFault::NoSound;
    return ConvertFault::Other;
}

QString describe(const ChildProcess::Ending &ending) {
    return ending.timedOut ? QStringLiteral("it took too long")
           : ending.signal ? QStringLiteral("it was ended by signal %1").arg(ending.signal)
                           : QStringLiteral("its exit status was %1").arg(ending.exitStatus);
}

} // namespace

foundation::Clock::Duration Converter::usualLimit(const QStringList &inputs) {
    double seconds = 120;
    for (const QString &input : inputs)
        seconds += static_cast<double>(QFileInfo(input).size()) / kRecordedBytesPerSecond;
    return std::chrono::seconds(static_cast<std::int64_t>(seconds));
}

bool Converter::isInstalled() const { return QFileInfo(program).isExecutable(); }

foundation::Result<Converter::Run> Converter::run(const QStringList &arguments, const QStringList &inputs,
                                                  const QString &output, const LineListener &listener) const {
    ChildProcess::Command command{program, arguments, {}, {QStringLiteral("CANTOREL_CONVERT_INTO=") + output}};
    command.inBackground = standsBack;
    const auto started = ChildProcess::start(command);
    if (!started)
        return started.failure();
    ChildProcess &child = *started.value();
    const std::stop_callback ender(stop, [&child] { child.kill(); }); // at once where it was asked for before
    Run run;
    QByteArray progress;
    run.ending = child.wait(
        [&](const QByteArray &line) {
            if (listener)
                listener(line);
            if (line.startsWith("size=")) {
                if (std::exchange(progress, line) != line)
                    child.goesOn(); // One that gives way to others may take long.
                return;
            }
            run.isOpened |= line.startsWith("Input #");
            run.said += line + '\n';
            if (run.said.size() > 2 * kKept)
                run.said = run.said.right(kKept);
        },
        limit.value_or(usualLimit(inputs)));
    run.said = run.said.right(kKept);
    return run;
}

ConvertTrouble Converter::troubleIn(const Run &run, const QStringList &inputs) const {
    const QString reason = reasonIn(run.said), ending = describe(run.ending);
    return {faultOf(*this, run, inputs), reason.isEmpty() ? ending : reason,
            QStringLiteral("%1: %2").arg(ending, QString::fromUtf8(run.said.right(2000)))};
}

std::optional<HiddenFile> Converter::make(const QStringList &arguments, const QStringList &inputs, HiddenFile file,
                                          const Proof &proof, const LineListener &listener,
                                          ConvertTrouble &trouble) const {
    const auto ran = run(arguments, inputs, file.path(), listener);
    if (!ran) {
        trouble = {ConvertFault::Other, ran.failure().detail, ran.failure().detail};
        return {};
    }
    trouble = troubleIn(ran.value(), inputs);
    if (!ran.value().ending.succeeded() || stop.stop_requested())
        return {};
    // The converter's word is not enough: ffmpeg is content with a last write that met a full disk, and takes an input
    // that can't be read to its end for one that ends there.
    if (complete)
        complete(file.path());
    QString lack = QStringLiteral("it is empty");
    auto flushed = std::async(std::launch::async, [&file] { return file.flush(); }); // beside the proof
    if (QFileInfo(file.path()).size() > 0)
        lack = proof(file.path());
    if (const int error = flushed.get())
        lack = QStringLiteral("flushing it: errno %1").arg(error);
    if (lack.isEmpty())
        return file;
    trouble.detail.prepend(lack + QStringLiteral("; "));
    if (stop.stop_requested())
        trouble.fault = ConvertFault::Stopped;
    else if (media::freeBytes(file.path()).value_or(kNoRoom) < kNoRoom)
        trouble.fault = ConvertFault::NoRoom;
    else if (QFileInfo(file.path()).size() == 0)
        trouble.fault = ConvertFault::Empty;
    else if (trouble.fault != ConvertFault::NoRoom && trouble.fault != ConvertFault::SourceGone)
        trouble.fault = ConvertFault::Incomplete;
    return {};
}

Converter::Proof asLongAs(const QString &input) {
    return [input](const QString &path) {
        const auto made = media::soundFacts(path);
        if (!made)
            return made.failure().detail;
        if (made.value().seconds <= 0) // as long as an input of which nothing can be read
            return QStringLiteral("no sound is in it");
        const auto differs = [&](const media::SoundFacts &wanted) {
            return std::abs(wanted.seconds - made.value().seconds) > wanted.padding + made.value().padding;
        };
        // A header that lies tells another length; only then is the input counted too.
        if (const auto promised = media::promisedSoundFacts(input); promised && !differs(promised.value()))
            return QString();
        const auto counted = media::soundFacts(input);
        if (!counted)
            return counted.failure().detail;
        return !differs(counted.value())
                   ? QString()
                   : QStringLiteral("%1 s of %2 s are in it").arg(made.value().seconds).arg(counted.value().seconds);
    };
}

int takeFreeName(HiddenFile &result, QString &wanted, const std::function<QString(const QString &)> &next) {
    for (;;) {
        const int error = result.take(wanted);
        const QString following = error == EEXIST ? next(wanted) : wanted;
        if (following == wanted) // done, or failed; a dangling link counts as free there
            return error;
        wanted = following;
    }
}

} // namespace cantorel
