#include "editor/ZQAudioInsertController.h"

#include "editor/operations/ZQAudioInserter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cantorel {

namespace {

media::MediaTime timeOf(double seconds) { return {std::llround(seconds * 1000), 1000}; }

} // namespace

void ZQAudioInsertController::adjustInsert(const Question &question,
                                           std::function<void(const Inserted &)> completedHandler) {
    mQuestion = question;
    mCompletedHandler = std::move(completedHandler);
    mTrouble = {};
    mLength = 1;
    setPosition(question.position);
}

double ZQAudioInsertController::fileDuration() const {
    return mQuestion.insert ? mQuestion.insert->duration().seconds() : 0;
}

double ZQAudioInsertController::mainDuration() const {
    return mQuestion.main ? mQuestion.main->duration().seconds() : 0;
}

void ZQAudioInsertController::setPosition(double seconds) {
    mQuestion.position = std::clamp(seconds, 0.0, mainDuration());
}

void ZQAudioInsertController::setLength(double seconds) { mLength = std::clamp(seconds, 0.0, kLongest); }

bool ZQAudioInsertController::actionForInsert() {
    if (asksForLength() && (mLength < 0.0005 || mLength > kLongestMade)) {
        mTrouble = kSilenceLength();
        return false;
    }
    ZQAudioInserter inserter;
    inserter.insertURL = mQuestion.url;
    const media::MediaTimeRange range{{0, 1000}, asksForLength() ? timeOf(mLength) : mQuestion.insert->duration()};
    const bool isAtEnd = mQuestion.position >= mainDuration();
    const auto made = inserter.insertAudioAsset(mQuestion.insert, mQuestion.main, mQuestion.type, range,
                                                isAtEnd ? mQuestion.main->duration() : timeOf(mQuestion.position));
    if (!made) {
        mTrouble = made.failure().sentence;
        return false;
    }
    mTrouble = {};
    if (const auto handler = std::exchange(mCompletedHandler, {}))
        handler({made.value(), inserter.resultName(mQuestion.mainName), inserter.startTime.seconds()});
    return true;
}

} // namespace cantorel
