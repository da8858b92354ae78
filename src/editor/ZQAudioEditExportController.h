#pragma once

#include "editor/operations/ZQAudioExportFormat.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace cantorel {

// What an export asks for: the type, whether the selections are joined, tags and cover. Type and mode are remembered in
// the settings. No widgets; owned by the editor, main thread.
class ZQAudioEditExportController : public QObject {
    Q_OBJECT

public:
    ~ZQAudioEditExportController() override;

    // By the settings.
    void initialize();
    // One file for each selection is a choice.
    void setExportModePartEnable(bool isEnabled);
    bool isExportModePartEnabled() const { return mIsPartEnabled; }
    void exportMethod_Merger() { chooseMode(true); }
    void exportMethod_Part() { chooseMode(false); }
    bool isMerger() const { return mFormat.isMerger; }
    static const QStringList &fileTypes();
    void selectExportFormat(const QString &type);
    const QString &fileType() const { return mFormat.fileType; }
    // The tags are asked for, since the type takes them.
    bool isID3ViewOpen() const;

    // The source: its tags and its cover are what is proposed.
    void parseAudioInfo(const QUrl &source);
    // In their order: title, artist, album, year, genre.
    enum Field { Title, Artist, Album, Year, Genre, FieldCount };
    QString text(Field field) const;
    void setText(Field field, const QString &text);
    void clearID3Info();
    // False for what is no picture.
    bool addNewArtworkImage(const QString &path);
    void deleteTheArtwotkImage(); // spelling is fixed
    const QByteArray &artwork() const { return mFormat.ID3ArtworkData; }

    ZQAudioExportFormat exportFormat() const { return mFormat; }

Q_SIGNALS:
    void changed();

private:
    void chooseMode(bool isMerger);
    void displayID3Info();
    void saveArtwotkImageFromAudioFileToCache();
    void removeCache();
    QString &textOf(Field field);

    QUrl mAudioURL;
    ZQAudioExportFormat mFormat;
    bool mIsPartEnabled = true;
    QString mCache; // the file with the source's cover; empty for none
};

} // namespace cantorel
