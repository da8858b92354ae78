#pragma once

#include "platform/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cantorel {

// What the options of a command that makes a movie have in common.
struct MovieOptions {
    std::optional<double> seconds; // from the first picture; else until a signal
    QString output;                // a full path
    std::optional<int> picturesPerSecond;
    QStringList audio; // names of devices; none: what the default output plays
    bool isSilent = false;
};

// They as they are typed.
struct MovieArguments {
    std::optional<double> seconds;
    std::string output;
    std::optional<int> picturesPerSecond;
    std::vector<std::string> audio;

    // heardOtherwise: what is heard without a device, as the help says it.
    void addTo(CLI::App &command, const std::string &heardOtherwise);
    // Fails for an output that cannot be made.
    foundation::Result<MovieOptions> options() const;
};

// Whole numbers with commas between them; empty for anything else.
std::vector<int> numbersOf(const std::string &text);

} // namespace cantorel
