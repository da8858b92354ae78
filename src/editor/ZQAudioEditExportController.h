#pragma once

#include "editor/operations/ZQAudioExportFormat.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <array>
#include <optional>
#include <vector>

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
    enum Field { Title, Artist, Album, Year, Genre, TagCount, Name = TagCount, FieldCount };
    QString text(Field field) const;
    void setText(Field field, const QString &text);
    void clearID3Info();
    // False for what is no picture.
    bool addNewArtworkImage(const QString &path);
    void deleteTheArtwotkImage(); // spelling is fixed
    const QByteArray &artwork() const { return mFormat.ID3ArtworkData; }

    // One file for each selection: what each says of its own is asked for. What nobody typed for a part is what is said
    // of all, and its name the next one behind that of the part before.
    bool arePartsAsked() const { return mIsPartEnabled && !mFormat.isMerger && mParts.size() >= 2; }
    // The selections by their starts, and what the first file is called that nobody names. What was typed goes with its
    // selection.
    void setParts(const QList<double> &starts, const QString &name);
    void forgetParts() { mParts.clear(); }
    int partCount() const { return static_cast<int>(mParts.size()); }
    QString partText(int part, Field field) const;
    bool isPartTyped(int part, Field field) const {
        return mParts[static_cast<std::size_t>(part)].typed[field].has_value();
    }
    void setPartText(int part, Field field, const QString &text);

    ZQAudioExportFormat exportFormat() const;

Q_SIGNALS:
    void changed();
    void partsChanged(); // what the parts say, or how many there are

private:
    void chooseMode(bool isMerger);
    void displayID3Info();
    void saveArtwotkImageFromAudioFileToCache();
    void removeCache();
    struct Part {
        double start = 0;
        std::array<std::optional<QString>, FieldCount> typed;
    };
    QString unnamed(int part) const;

    QUrl mAudioURL;
    ZQAudioExportFormat mFormat;
    bool mIsPartEnabled = true;
    std::vector<Part> mParts;
    QString mPartName;
    QString mCache; // the file with the source's cover; empty for none
};

} // namespace cantorel
