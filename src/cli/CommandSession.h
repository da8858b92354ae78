#pragma once

#include "app/start/Hardware.h"
#include "platform/foundation/Sentence.h"

#include <QJsonObject>
#include <QString>

#include <functional>

namespace cantorel {

// How a command ended: its exit status, and for a failure one sentence that says what was wrong and what to do.
struct Outcome {
    int status = 0;
    QString sentence;

    static Outcome done() { return {}; }
    static Outcome failed(const foundation::Sentence &sentence);
    static Outcome wrongUsage(const foundation::Sentence &sentence);
};

// What all commands of one run share: the common options, standard output, and what is to be done once the command
// line has been read. Made by runCommandLine; main thread.
class CommandSession {
public:
    bool json = false;
    bool quiet = false;
    BackendChoice backend = BackendChoice::Automatic;

    // Set by the command that was chosen; run after all options have been read.
    std::function<Outcome()> action;

    // One object, as a line of its own, when the run is asked for JSON; else the text for a person.
    void answer(const QJsonObject &object, const QString &text) const;
    // Only for a person, and not for one who wants quiet.
    void note(const QString &text) const;
};

// Writes one line to standard output at once.
void printLine(const QString &text);

// False when some of what was printed found no place, as on a full disk.
bool printedAll();

} // namespace cantorel
