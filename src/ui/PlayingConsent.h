#pragma once

namespace cantorel::ui {

// Whether what is played would be in a recording of system sound, and the person has not agreed to that yet. Agreed to
// once, it is for as long as that recording lasts.
class PlayingConsent {
public:
    void setRecordsSystemSound(bool records) {
        if (!records)
            mState = State::Needless;
        else if (mState == State::Needless)
            mState = State::Wanted;
    }
    bool isWanted() const { return mState == State::Wanted; }
    void give() {
        if (isWanted())
            mState = State::Given;
    }

private:
    enum class State { Needless, Wanted, Given } mState = State::Needless;
};

} // namespace cantorel::ui
