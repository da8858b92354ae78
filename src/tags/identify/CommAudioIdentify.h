#pragma once

#include "tags/id3Tag.h"
#include "tags/identify/RecognitionServices.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <span>
#include <stop_token>

namespace cantorel {

// What a recording was recognised as; a text that is not known is empty.
class RecognisedMusic {
public:
    RecognisedMusic() = default;
    RecognisedMusic(RecognitionCandidate song, QString genre, QByteArray cover)
        : mSong(std::move(song)), mGenre(std::move(genre)), mCover(std::move(cover)) {}

    const QString &Title() const { return mSong.title; }
    const QString &Artist() const { return mSong.artist; }
    const QString &Album() const { return mSong.album; }
    const QString &Gener() const { return mGenre; } // Spelling is fixed.
    const QString &Year() const { return mSong.year; }
    const QByteArray &CoverImage() const { return mCover; } // encoded; empty for none
    double score() const { return mSong.score; }            // 0 to 1
    QString description() const;                            // a line for the log

private:
    RecognitionCandidate mSong;
    QString mGenre;
    QByteArray mCover;
};

// Recognises the music in a file. The songs of one's own folders come first, where the person has them read: any part
// of one is found, and nothing leaves the machine. The services know songs by their first two minutes and by their
// lengths, so that only what holds a song's beginning is found. Each object is used by one thread.
class CommAudioIdentify {
public:
    // program: the converter, which decodes the file. songs: where those of one's own are kept; empty for none.
    explicit CommAudioIdentify(QString program, RecognitionServices services = RecognitionServices::fromSettings(),
                               std::stop_token stop = {}, QString songs = songsInUse())
        : mProgram(std::move(program)),
          mServices(std::move(services)),
          mStop(std::move(stop)),
          mSongs(std::move(songs)) {}
    // Empty where the person does not have them read.
    static QString songsInUse();
    static CommAudioIdentify InitWithFFMpeg(const QString &program) { return CommAudioIdentify(program); }

    // Blocks. Nothing when no song is sure enough, or when anything failed, which is logged in one line.
    std::optional<RecognisedMusic> Start(const QString &filePath, bool fetchCorverImage);
    // The song that the last Start() found and was not sure of.
    const std::optional<RecognisedMusic> &proposal() const { return mProposal; }
    // Why the last Start() could not be answered; empty when it was, by a song or by none.
    const foundation::Sentence &trouble() const { return mTrouble; }

    // The last Start() would have asked a service, which the person does not know of yet.
    bool wantsAgreement() const { return mWantsAgreement; }

private:
    struct Found {
        std::optional<RecognisedMusic> music;
        bool isSure = false, wantsAgreement = false;
    };
    foundation::Result<Found> find(const QString &filePath, bool withCover) const;
    Found findOwn(std::span<const std::int16_t> sound, bool withCover) const;
    foundation::Result<Found> askServices(std::span<const std::int16_t> sound, bool withCover) const;
    RecognisedMusic completed(const RecognitionCandidate &song, bool withCover) const;

    QString mProgram;
    RecognitionServices mServices;
    std::stop_token mStop;
    QString mSongs;
    std::optional<RecognisedMusic> mProposal;
    foundation::Sentence mTrouble;
    bool mWantsAgreement = false;
};

} // namespace cantorel
