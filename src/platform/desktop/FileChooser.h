#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace cantorel::desktop {

// The desktop's own dialog for files and folders. Main thread.
class FileChooser {
public:
    virtual ~FileChooser() = default;

    // Files of these types, in lower case and without a full stop; none: all files.
    struct Filter {
        QString name;
        QStringList extensions;
    };
    struct Question {
        enum class What { Files, Folder, OneFile, NewFile } what = What::Files;
        QString title = {};
        QString folder = {};        // where it begins; empty for the desktop's choice
        quintptr x11Parent = 0;     // the window that asks; 0 where there is no X server
        QString name = {};          // proposed for a new file
        QList<Filter> filters = {}; // to choose from, the first one at first; none: all files
    };
    // What was chosen; empty where the person has cancelled; nothing where the desktop shows no dialog.
    using Answer = std::function<void(const std::optional<QStringList> &paths)>;
    // Asks without waiting; answered once, and not when the chooser has gone.
    virtual void ask(const Question &question, Answer answered) = 0;
};

} // namespace cantorel::desktop
