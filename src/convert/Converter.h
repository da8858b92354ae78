#pragma once

#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/Clock.h"
#include "platform/foundation/HiddenFile.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <stop_token>

namespace cantorel {

// Why a conversion came to nothing, as far as clients tell them apart.
enum class ConvertFault {
    Stopped,
    SourceGone,
    NotAllowed, // to read the source
    NoProgram,  // ffmpeg itself
    NoRoom,
    NoSound,   // in the source
    NoLength,  // is told by the source
    NoEncoder, // for that format
    Empty,
    Incomplete,
    TimedOut,
    Signalled,
    Other,
};

struct ConvertTrouble {
    ConvertFault fault = ConvertFault::Other;
    QString reason; // for Other: the one line of the converter's text that matters, or how it ended
    QString detail; // for the log
};

// The converter program, and what holds for one run of it. A value; its operations block, so they run on workers.
struct Converter {
    QString program; // writes into the file that CANTOREL_CONVERT_INTO names
    // How long a run may go on without progress; usualLimit() of its inputs by default.
    std::optional<foundation::Clock::Duration> limit = {};
    std::stop_token stop = {}; // ends the run at once, or before it begins
    // What is added to a result before it is flushed and proved.
    std::function<void(const QString &path)> complete = {};
    bool standsBack = true; // behind everything else that the machine does; not where somebody waits for it

    using LineListener = foundation::ChildProcess::LineListener;

    bool isInstalled() const;
    // Two minutes, and at least the length of the inputs by their size.
    static foundation::Clock::Duration usualLimit(const QStringList &inputs);

    // What came of a run.
    struct Run {
        foundation::ChildProcess::Ending ending;
        QByteArray said;       // the last 16 KiB of its lines, without those of progress
        bool isOpened = false; // the converter has seen what an input is
    };
    // Fails when there is no such program.
    foundation::Result<Run> run(const QStringList &arguments, const QStringList &inputs, const QString &output,
                                const LineListener &listener = {}) const;

    // Why a run of those inputs failed.
    ConvertTrouble troubleIn(const Run &run, const QStringList &inputs) const;

    // What the result of a run lacks, in a line for the log; empty when it is whole.
    using Proof = std::function<QString(const QString &path)>;

    // Has the result of those inputs written into a hidden file of the folder. It is there only when the converter
    // ended well and the result is on the disk, not empty, and proved. Nothing, with the trouble, otherwise.
    std::optional<foundation::HiddenFile> make(const QStringList &arguments, const QStringList &inputs,
                                               foundation::HiddenFile file, const Proof &proof,
                                               const LineListener &listener, ConvertTrouble &trouble) const;
};

// For a result that has to hold sound, as long as that of its input, but for what coders add.
Converter::Proof asLongAs(const QString &input);

// Gives the result the name wanted or the next free one; an errno, and the name that was tried last, when that fails.
int takeFreeName(foundation::HiddenFile &result, QString &wanted, const std::function<QString(const QString &)> &next);

} // namespace cantorel
