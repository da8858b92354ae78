#pragma once

#include <QString>
#include <QStringList>

class QObject;

namespace cantorel {

// How an alert looks; the numbers are the platform's alert styles.
enum class AlertStyle { Warning = 0, Informational = 1, Critical = 2 };

// Asks the person, or tells them something, without knowing by what means: the window shows a sheet, the terminal
// prints, a test records. Main thread. A window is the object of the face that the alert belongs to, or null.
class Asker {
public:
    virtual ~Asker() = default;

    // Tells a sentence and returns when it has been taken note of.
    virtual void tell(const QString &title, const QString &message, AlertStyle style, QObject *window = nullptr) = 0;

    // Lets the person choose; answers the index of the choice. The last choice is the safe one, taken where nobody
    // can answer.
    virtual int ask(const QString &title, const QString &message, const QStringList &choices,
                    QObject *window = nullptr) = 0;

    // Lets the person name a new file with the extension, beginning in the folder; empty when they do not want to.
    virtual QString askForNewFile(const QString &folder, const QString &extension) = 0;
};

// Lends an asker to the holders of class operations while it lives; after it, the one before is asked again.
class InstalledAsker {
public:
    explicit InstalledAsker(Asker &asker);
    ~InstalledAsker();
    InstalledAsker(const InstalledAsker &) = delete;
    InstalledAsker &operator=(const InstalledAsker &) = delete;

    // The installed one; without one, an asker that takes the safe choice and prints the text.
    static Asker &current();

private:
    Asker *const mBefore;
};

} // namespace cantorel
