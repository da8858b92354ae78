#pragma once

#include "platform/foundation/Sentence.h"
#include "platform/foundation/SerialWorker.h"
#include "tags/TagWriting.h"
#include "tags/id3Tag.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <array>
#include <atomic>
#include <optional>

namespace cantorel {

class RecordedList;

// The tag editor: what one file or several hold, and what a person makes of it until it is saved. Of several only the
// fields that were touched are written. Files are read and written beside the main thread. Owned by who shows it; main
// thread.
class ID3EditWindowController : public QObject {
    Q_OBJECT

public:
    enum Field { Title, Artist, Album, Year, Genre, FieldCount };
    // Editable: they take tags. Plain: some are of a kind that takes none. Unknown: nothing is chosen, or it holds no
    // sound whose tags are known.
    enum class State { Unknown, Reading, Plain, Editable, Saving };
    // What was touched and is not on the disk.
    struct Unsaved {
        QStringList files;
        id3TagEdit edit;
    };

    // The list outlives it; files that it has follow their new tags.
    explicit ID3EditWindowController(RecordedList &list);
    // Waits for what is being written.
    ~ID3EditWindowController() override;

    // Other files: they are read, and what was not saved of those before is told by left().
    void edit(const QStringList &files);
    const QStringList &files() const { return mFiles; }
    // What was not saved is told by left(), and the files are shown as they are; false when there is nothing.
    bool leave();
    State state() const { return mState; }

    // Reads the files again; what was touched is forgotten.
    void displayID3();
    // Everything is empty, and not saved yet.
    void clearID3();
    // The picture of that file, once it is read.
    void addID3TagImage(const QString &file);
    void deleteID3TagImage() { setImage({}); }
    // Writes what was touched, then tells written(). What was left is written in the same way.
    void saveID3tag();
    void save(const Unsaved &unsaved);
    void undo(const TagUndo &undo);

    QString text(Field field) const { return mShown.texts[field].text; }
    // The files differ in it, and nobody has touched it.
    bool isMixed(Field field) const { return mShown.texts[field].isMixed; }
    void setText(Field field, const QString &text) { mShown.texts[field] = {text, false, true}; }
    // Empty for none, and where the files differ.
    const QByteArray &image() const { return mShown.image; }
    bool isImageTouched() const { return mShown.isImageTouched; }
    // Covers are not written into an M4A.
    bool canEditImage() const;

Q_SIGNALS:
    void changed(); // the state or what is shown, but by setText()
    void left(const ID3EditWindowController::Unsaved &unsaved);
    // unsaved: of the files that failed, where others are shown by now. isYearKept: what was given as the year is none,
    // so that of some file stays.
    void written(const TagsWritten &written, const ID3EditWindowController::Unsaved &unsaved, bool isYearKept);
    void failed(const foundation::Sentence &why);

private:
    struct Text {
        QString text;
        bool isMixed = false, isTouched = false;
    };
    struct Shown {
        std::array<Text, FieldCount> texts;
        QByteArray image;
        bool isImageTouched = false;
    };
    class Merged;

    bool isTouched() const;
    id3TagEdit touched() const;
    std::optional<Unsaved> unsaved() const;
    void setImage(const QByteArray &picture);
    void setState(State state);
    void settle(const QStringList &files, bool isDone);

    RecordedList &mList;
    QStringList mFiles;
    State mState = State::Unknown;
    Shown mShown;
    std::atomic<int> mAsked = 0; // the latest reading; others end early
    foundation::SerialWorker mWorker;
};

} // namespace cantorel
