#pragma once

#include "platform/foundation/Sentence.h"
#include "platform/foundation/SerialWorker.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <stop_token>

namespace cantorel {

// Has the songs of one's own folders read in the background, where the person wants that, so that they are recognised
// without any service. Owned by the application; main thread, with a worker of the lowest priority.
class OwnSongs : public QObject {
    Q_OBJECT

public:
    // program: the converter. store: the file that they are kept in.
    explicit OwnSongs(QString program, QString store);
    // Ends what is being read; the next start goes on there.
    ~OwnSongs() override;

    // The folders, as the settings have them.
    static QStringList folders();
    static void setFolders(const QStringList &folders);

    // Reads what is new as the settings are now, or ends that.
    void update();
    // Removes all that is known, and reads nothing more.
    void forget();

    bool isReading() const { return mIsReading; }
    int known() const { return mKnown; } // songs
    const foundation::Sentence &trouble() const { return mTrouble; }

Q_SIGNALS:
    void changed();

private:
    // Ends what the worker does. What it still tells then is not heard.
    std::stop_token restart();
    // From the worker, while nothing else has been begun.
    void tell(const std::stop_token &stop, std::function<void()> news);

    const QString mProgram, mStore;
    std::stop_source mStop; // of what was begun last
    bool mIsReading = false;
    int mKnown = 0;
    foundation::Sentence mTrouble;
    foundation::SerialWorker mWorker;
};

} // namespace cantorel
