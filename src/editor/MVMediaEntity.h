#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <mutex>
#include <optional>

namespace cantorel {

// A media file that can be put on a clipboard and dragged. Held by whoever shows it; the main thread.
class MVMediaEntity {
public:
    virtual ~MVMediaEntity() = default;
    MVMediaEntity(const MVMediaEntity &) = delete;
    MVMediaEntity &operator=(const MVMediaEntity &) = delete;

    QUrl fileURL;

    // As kinds of what a clipboard holds.
    QStringList writableTypesForPasteboard() const;
    QByteArray pasteboardPropertyListForType(const QString &type) const; // empty for another type
    int writingOptionsForType(const QString & /*type*/) const { return 0; }
    static QStringList readableTypesForPasteboard();

protected:
    explicit MVMediaEntity(QUrl url) : fileURL(std::move(url)) {}
};

// A folder.
class MVMediaFolderEntity : public MVMediaEntity {
public:
    explicit MVMediaFolderEntity(const QUrl &url) : MVMediaEntity(url) {}
};

// A sound file, and what it says of itself: each is read from the file at each call, the image once. Any thread.
class MVMusicEntity : public MVMediaEntity {
public:
    int rating = 0;
    int playCounts = 0;
    int playState = 0;

    explicit MVMusicEntity(const QUrl &initWithFileURL) : MVMediaEntity(initWithFileURL) {}
    // Null for what is no sound.
    static std::unique_ptr<MVMusicEntity> entityForURL(const QUrl &url);
    // Null where nothing of that kind can be told.
    static std::unique_ptr<MVMusicEntity> initWithPasteboardPropertyList(const QByteArray &propertyList,
                                                                         const QString &ofType);
    static bool isAudioWithURL(const QUrl &url);
    static bool isVideoWithURL(const QUrl &url); // deliberately never

    // Empty where the file does not say.
    QString title() const { return commonText(QStringLiteral("title")); }
    QString artist() const { return commonText(QStringLiteral("artist")); }
    QString album() const { return commonText(QStringLiteral("album")); }
    QString type() const { return commonText(QStringLiteral("type")); }
    // An encoded picture: the file's own, or that of unknown music.
    QByteArray image() const;
    double duration() const; // seconds; whole ones where it can't be played

private:
    QString commonText(const QString &key) const;

    mutable std::mutex mMutex;
    mutable std::optional<QByteArray> mImage;
};

} // namespace cantorel
