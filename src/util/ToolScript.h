#pragma once

#include <QString>

namespace cantorel {

// Class operation that runs scripts through the desktop's script host. Blocks until the script ends: worker threads.
class ToolScript {
public:
    ToolScript() = delete;

    // False for an empty text and for one that does not compile. Deliberately true when executing fails; the error is
    // written to the console and, where asked for, into the error text.
    static bool loadScriptWithSource(const QString &source, QString *error = nullptr);
};

} // namespace cantorel
