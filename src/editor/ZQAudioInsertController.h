#pragma once

#include "editor/operations/ZQAudioInserter.h"
#include "platform/foundation/Sentence.h"
#include "platform/media/asset/Asset.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

namespace cantorel {

// Asks where something is inserted into the open sound, and how long a silence is. No widgets; owned by the editor,
// main thread.
class ZQAudioInsertController : public QObject {
    Q_OBJECT

public:
    struct Question {
        InsertType type = InsertType::Silence;
        media::AssetPointer main, insert; // insert: null for silence
        QUrl url;                         // of what is inserted
        QString mainName;
        double position = 0; // proposed, in seconds
    };
    struct Inserted {
        media::AssetPointer composition;
        QString name;
        double start = 0; // where it was inserted
    };
    // completedHandler: called once with what has become of it, and not when it is cancelled.
    void adjustInsert(const Question &question, std::function<void(const Inserted &)> completedHandler);

    InsertType type() const { return mQuestion.type; }
    QString fileName() const { return mQuestion.url.fileName(); }
    double fileDuration() const; // seconds
    double mainDuration() const; // seconds, exact: how far the position may go
    bool asksForLength() const { return mQuestion.type == InsertType::Silence; }

    double position() const { return mQuestion.position; }
    void setPosition(double seconds);
    double length() const { return mLength; }
    void setLength(double seconds);

    // False, and trouble() says why.
    bool actionForInsert();
    void actionForCancel() { mCompletedHandler = nullptr; }
    const foundation::Sentence &trouble() const { return mTrouble; }

    static constexpr double kLongest = 2147483647.0; // that can be typed
    static constexpr double kLongestMade = 100 * 3600 - 0.001;

private:
    Question mQuestion;
    double mLength = 1;
    foundation::Sentence mTrouble;
    std::function<void(const Inserted &)> mCompletedHandler;
};

} // namespace cantorel
