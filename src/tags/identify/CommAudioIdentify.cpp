#include "tags/identify/CommAudioIdentify.h"

#include "log/Log.h"
#include "settings/AppSettings.h"
#include "tags/TagReading.h"
#include "tags/identify/DecodedSound.h"
#include "tags/identify/Fingerprint.h"
#include "tags/identify/LeadingSilence.h"
#include "tags/index/SongIndex.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr int kRate = DecodedSound::kRate;
constexpr std::size_t kFingerprinted = 120 * kRate; // by services
// So much of a file is decoded: a song may begin late, and its length counts up to here.
constexpr int kLongest = 900; // seconds
constexpr double kSure = 0.8; // of a score
constexpr double kProposed = 0.5;
constexpr double kEqual = 0.03; // scores that don't tell two songs apart
// A service compares lengths that differ by at most half a minute, so that these reach every song of two to six and a
// half minutes, whatever was cut off behind it.
constexpr int kGuessedLengths[] = {150, 210, 270, 330, 390};
constexpr int kReach = 30;

// The best one, unless another song is as likely.
bool isSure(const std::vector<RecognitionCandidate> &candidates) {
    return candidates.front().score >= kSure
           && (candidates.size() < 2 || candidates.front().score - candidates[1].score > kEqual);
}

} // namespace

QString RecognisedMusic::description() const {
    return QStringLiteral("Title=%1, Artist=%2, Album=%3, Gener=%4, Year=%5, CoverImage=%6 bytes, score=%7")
        .arg(Title(), Artist(), Album(), Gener(), Year())
        .arg(CoverImage().size())
        .arg(score());
}

QString CommAudioIdentify::songsInUse() { return AppSettings::isOwnSongs() ? songStorePath() : QString(); }

// What services are asked is decided once the songs of one's own have nothing that is sure.
Result<CommAudioIdentify::Found> CommAudioIdentify::find(const QString &filePath, bool withCover) const {
    ConvertTrouble trouble;
    const auto decoded = DecodedSound::decode(mProgram, filePath, kLongest, mStop, trouble);
    if (!decoded)
        return Failure{{}, trouble.detail};
    const auto sound = withoutLeadingSilence(decoded->samples());
    Found own = findOwn(sound, withCover);
    if (own.isSure || (!mSongs.isEmpty() && !mServices.hasAccess()))
        return own;
    if (mServices.hasAccess() && !mServices.isAgreed) {
        own.wantsAgreement = !own.music;
        return own;
    }
    auto answer = askServices(sound, withCover);
    return own.music && (!answer || !answer.value().isSure) ? Result<Found>(std::move(own)) : std::move(answer);
}

CommAudioIdentify::Found CommAudioIdentify::findOwn(std::span<const std::int16_t> sound, bool withCover) const {
    if (mSongs.isEmpty())
        return {};
    const auto fingerprint = fingerprintOf(sound, kRate);
    const auto store = openSongStore(mSongs, SongStore::Opening::ToRead);
    if (!fingerprint || !store || !store.value()) {
        const auto *failure = !fingerprint ? &fingerprint.failure() : !store ? &store.failure() : nullptr;
        if (failure) // none are read yet otherwise
            Log(QStringLiteral("the own songs are not asked: %1").arg(failure->detail));
        return {};
    }
    const auto found = findSong(*store.value(), fingerprint.value().items);
    if (!found)
        Log(QStringLiteral("the own songs don't answer: %1").arg(found.failure().detail));
    if (!found || !found.value())
        return {};
    const auto &[song, errors, isSure] = *found.value();
    const QByteArray cover = withCover ? songTags(song.file.path).id3Image : QByteArray();
    return {RecognisedMusic({1 - errors, {}, {}, song.title, song.artist, song.album, song.year}, song.genre, cover),
            isSure, false};
}

Result<CommAudioIdentify::Found> CommAudioIdentify::askServices(std::span<const std::int16_t> sound,
                                                                bool withCover) const {
    const auto fingerprint = fingerprintOf(sound.first(std::min(sound.size(), kFingerprinted)), kRate);
    if (!fingerprint)
        return fingerprint.failure();
    const int length = std::max(1, static_cast<int>(sound.size() / kRate));
    std::vector<int> lengths{length};
    for (const int guess : kGuessedLengths)
        if (guess > length + kReach)
            lengths.push_back(guess);
    std::optional<RecognitionCandidate> best;
    for (const int seconds : lengths) {
        const auto answer = mServices.candidates(fingerprint.value().text, seconds, mStop);
        if (!answer)
            return answer.failure();
        if (answer.value().empty())
            continue;
        const RecognitionCandidate &song = answer.value().front();
        if (isSure(answer.value()))
            return Found{completed(song, withCover), true, false};
        if (song.score >= kProposed && (!best || song.score > best->score))
            best = song;
    }
    return best ? Found{completed(*best, withCover), false, false} : Found();
}

RecognisedMusic CommAudioIdentify::completed(const RecognitionCandidate &song, bool withCover) const {
    return {song, mServices.genre(song.recording, mStop),
            withCover ? mServices.cover(song.release, mStop) : QByteArray()};
}

std::optional<RecognisedMusic> CommAudioIdentify::Start(const QString &filePath, bool fetchCorverImage) {
    mProposal.reset();
    mTrouble = {};
    mWantsAgreement = false;
    std::optional<RecognisedMusic> music;
    auto found = find(filePath, fetchCorverImage);
    if (!found) {
        mTrouble = found.failure().sentence;
        if (mTrouble.isEmpty())
            mTrouble = QStringLiteral("\"%1\" can't be read as sound.").arg(filePath);
        Log(QStringLiteral("not identified %1: %2").arg(filePath, found.failure().detail));
        return {};
    }
    mWantsAgreement = found.value().wantsAgreement;
    (found.value().isSure ? music : mProposal) = std::move(found.value().music);
    return music;
}

} // namespace cantorel
