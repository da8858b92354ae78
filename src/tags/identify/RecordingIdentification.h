#pragma once

#include "platform/foundation/Result.h"
#include "tags/TagWriting.h"
#include "tags/identify/CommAudioIdentify.h"

#include <QObject>
#include <QStringList>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace cantorel {

class RecordedAudioInfo;
class RecordedItemPointer;
class RecordedList;

// Identifies recordings of the list: a song that is sure gives a file its name and its tags. While that goes on the
// recording is in use, so that nothing else renames or changes it; one that was changed or taken away meanwhile is left
// alone. Owned by the application; main thread, with workers for services and files.
class RecordingIdentification : public QObject {
    Q_OBJECT

public:
    // Makes what recognises; called on a worker for each file.
    using Recogniser = std::function<CommAudioIdentify(std::stop_token)>;

    // What was done to one recording.
    struct Identified {
        QString before, file; // its paths
        RecognisedMusic music;
        TagUndo tags; // empty where none were written
    };

    // The list outlives it.
    RecordingIdentification(RecordedList &list, Recogniser recogniser);
    // Ends what is asked, and waits for what is being written.
    ~RecordingIdentification() override;

    // For a person who asks: begins with a recording that is there and not in use; one that is being identified
    // already is not begun again.
    void identifyID3TagsFromFile(const QString &path);
    // The same for a finished recording where the settings want it and it is long enough; false where it isn't begun.
    bool identifyFinished(const RecordedAudioInfo &item);
    // Does what a sure song would have done with one that was proposed.
    void use(const QString &file, const RecognisedMusic &music);
    // Gives the recording its tags and its name back; the next free name where that is taken, and only the name where
    // the file was changed since.
    void undo(const Identified &identified);

    // The person has been told what is sent, and wants it: goes on with the recordings that waited for that, for good.
    void agree();
    // Does not: they are left alone, and those that begin by themselves no longer ask.
    void notNow();

    bool isIdle() const { return mUnderWay.empty(); }

Q_SIGNALS:
    void identified(const RecordingIdentification::Identified &identified);
    // Not sure enough to rename anything.
    void proposed(const QString &file, const RecognisedMusic &music);
    // Nothing was found, and somebody asked; why is empty where the music is just not known.
    void notIdentified(const QString &file, const foundation::Sentence &why);
    // A service would be asked for the first time; agree() or notNow() answers.
    void agreementWanted();

private:
    struct Work; // one recording under way

    enum class Asked { ByHand, ByItself };

    std::shared_ptr<Work> begin(const QString &path, Asked asked);
    bool identify(const QString &path, Asked asked);
    // Runs the task on a worker, then the other one here.
    void behind(const std::shared_ptr<Work> &work, std::function<void(Work &)> task,
                void (RecordingIdentification::*then)(const std::shared_ptr<Work> &));
    void answered(const std::shared_ptr<Work> &work);
    void name(Work &work, RecordedAudioInfo &item);
    void written(const std::shared_ptr<Work> &work);
    void undone(const std::shared_ptr<Work> &work);
    void end(const std::shared_ptr<Work> &work);
    void renameTo(RecordedAudioInfo &item, const QString &base);

    RecordedList &mList;
    const Recogniser mRecogniser;
    std::stop_source mStop;
    std::vector<std::shared_ptr<Work>> mUnderWay;
    QStringList mAwaiting; // files that wait for agree()
    bool mIsDeclined = false;
    QThreadPool mWorkers;
};

} // namespace cantorel
