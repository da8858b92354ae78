#include "tags/identify/CommAudioIdentify.h"

#include "convert/Converter.h"
#include "log/Log.h"
#include "tags/identify/Fingerprint.h"
#include "tags/identify/LeadingSilence.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include <algorithm>
#include <cstring>
#include <vector>

namespace cantorel {

using foundation::Failure;
using foundation::Result;

namespace {

constexpr int kRate = 11025; // what fingerprints are made at
constexpr std::size_t kFingerprinted = 120 * kRate;
// So much of a file is decoded: a song may begin late, and its length counts up to here.
constexpr int kLongest = 900; // seconds
constexpr double kSure = 0.8; // of a score
constexpr double kProposed = 0.5;
constexpr double kEqual = 0.03; // scores that don't tell two songs apart
// A service compares lengths that differ by at most half a minute, so that these reach every song of two to six and a
// half minutes, whatever was cut off behind it.
constexpr int kGuessedLengths[] = {150, 210, 270, 330, 390};
constexpr int kReach = 30;

// Mono samples as the converter decodes them.
Result<std::vector<std::int16_t>> decoded(const QString &program, const QString &file, const std::stop_token &stop) {
    QTemporaryFile raw(QDir::tempPath() + QStringLiteral("/cantorel-XXXXXX.wav"));
    if (!raw.open())
        return Failure{{}, QStringLiteral("no temporary file: %1").arg(raw.errorString())};
    Converter converter{program};
    converter.stop = stop;
    const QStringList arguments = {QStringLiteral("-i"),
                                   file,
                                   QStringLiteral("-vn"),
                                   QStringLiteral("-t"),
                                   QString::number(kLongest),
                                   QStringLiteral("-ac"),
                                   QStringLiteral("1"),
                                   QStringLiteral("-ar"),
                                   QString::number(kRate),
                                   QStringLiteral("-f"),
                                   QStringLiteral("s16le"),
                                   QStringLiteral("-y"),
                                   raw.fileName()};
    const auto run = converter.run(arguments, {file}, raw.fileName());
    if (!run)
        return run.failure();
    if (!run.value().ending.succeeded())
        return Failure{{}, converter.troubleIn(run.value(), {file}).detail};
    const QByteArray bytes = raw.readAll();
    std::vector<std::int16_t> samples(static_cast<std::size_t>(bytes.size()) / sizeof(std::int16_t));
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(std::int16_t));
    return samples;
}

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

Result<CommAudioIdentify::Found> CommAudioIdentify::find(const QString &filePath) const {
    const auto samples = decoded(mProgram, filePath, mStop);
    if (!samples)
        return samples.failure();
    const auto sound = withoutLeadingSilence(samples.value());
    const auto fingerprint = fingerprintOf(sound.first(std::min(sound.size(), kFingerprinted)), kRate);
    if (!fingerprint)
        return fingerprint.failure();
    if (mServices.hasAccess() && !mServices.isAgreed)
        return Found{{}, false, true};
    const int length = std::max(1, static_cast<int>(sound.size() / kRate));
    std::vector<int> lengths{length};
    for (const int guess : kGuessedLengths)
        if (guess > length + kReach)
            lengths.push_back(guess);
    Found best;
    for (const int seconds : lengths) {
        const auto answer = mServices.candidates(fingerprint.value(), seconds, mStop);
        if (!answer)
            return answer.failure();
        if (answer.value().empty())
            continue;
        const bool sure = isSure(answer.value());
        const RecognitionCandidate &song = answer.value().front();
        if (song.score >= kProposed && (!best.song || song.score > best.song->score))
            best = {song, sure, false};
        if (sure)
            return Found{song, true, false};
    }
    return best;
}

RecognisedMusic CommAudioIdentify::completed(const RecognitionCandidate &song, bool withCover) const {
    return {song, mServices.genre(song.recording, mStop),
            withCover ? mServices.cover(song.release, mStop) : QByteArray()};
}

std::optional<RecognisedMusic> CommAudioIdentify::Start(const QString &filePath, bool fetchCorverImage) {
    mProposal.reset();
    mTrouble = {};
    mWantsAgreement = false;
    const auto found = find(filePath);
    if (!found) {
        mTrouble = found.failure().sentence;
        if (mTrouble.isEmpty())
            mTrouble = QStringLiteral("\"%1\" can't be read as sound.").arg(filePath);
        Log(QStringLiteral("not identified %1: %2").arg(filePath, found.failure().detail));
        return {};
    }
    const auto &[song, sure, wantsAgreement] = found.value();
    mWantsAgreement = wantsAgreement;
    if (!song)
        return {};
    RecognisedMusic music = completed(*song, fetchCorverImage);
    if (sure)
        return music;
    mProposal = std::move(music);
    return {};
}

} // namespace cantorel
