#include "util/Asker.h"

#include "platform/foundation/Console.h"

#include <utility>

namespace cantorel {

namespace {

class SilentAsker : public Asker {
public:
    void tell(const QString &title, const QString &message, AlertStyle, QObject *) override {
        foundation::printToConsole(QStringLiteral("%1: %2\n").arg(title, message));
    }
    int ask(const QString &, const QString &, const QStringList &choices, QObject *) override {
        return static_cast<int>(choices.size()) - 1;
    }
    QString askForNewFile(const QString &, const QString &) override { return {}; }
};

Asker *installed = nullptr;

} // namespace

InstalledAsker::InstalledAsker(Asker &asker) : mBefore(std::exchange(installed, &asker)) {}

InstalledAsker::~InstalledAsker() { installed = mBefore; }

Asker &InstalledAsker::current() {
    static SilentAsker silent;
    return installed != nullptr ? *installed : silent;
}

} // namespace cantorel
