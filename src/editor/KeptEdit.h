#pragma once

#include "editor/EditStep.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/SerialWorker.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstdint>
#include <map>
#include <memory>

namespace cantorel {

// What is open in the editor, kept in a file beside the program's state, so that a program that is killed loses none of
// it. Only names of sounds are kept, never sound. Another program that runs meanwhile keeps and finds nothing. Main
// thread; the file is written by a worker.
class KeptEdit : public QObject {
    Q_OBJECT

public:
    KeptEdit(); // in the state folder
    explicit KeptEdit(QString file);
    ~KeptEdit() override = default; // waits for what is being written

    // What an earlier program has left: the name of the sound, empty for nothing. It stays until it is continued,
    // discarded or overtaken by other work.
    QString leftName() const;
    const QByteArray &left() const { return mLeft; }
    // Opens its sounds again, which takes a while; fails with the first one that is gone or was changed. Any thread.
    static foundation::Result<EditStep> opened(const QByteArray &left);
    void didContinue() { mLeft.clear(); }
    void discard();

    // Replaces what was kept before.
    void keep(const EditStep &step);
    // There is nothing to lose any more.
    void forget();

Q_SIGNALS:
    void overtaken(); // nothing is left of the earlier program

private:
    struct Stamp {
        std::int64_t bytes = 0, time = 0; // nanoseconds
    };
    static Stamp stampOf(const QString &path);
    QByteArray encoded(const EditStep &step);

    const QString mFile;
    foundation::FileDescriptor mLock; // not open where another program has it
    QByteArray mLeft;
    // The worker's: what was written last, and the sounds as they were when they were first kept.
    QByteArray mWritten;
    std::map<std::weak_ptr<const media::Asset>, Stamp, std::owner_less<>> mStamps;
    foundation::SerialWorker mWorker; // last: it uses the above
};

} // namespace cantorel
