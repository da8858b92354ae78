#pragma once

#include "ui/Card.h"

namespace cantorel {
class RecorderPanel;
}

namespace cantorel::ui {

// The cards of the record page; the most urgent one that asks is in sight.
class RecordCards : public QWidget {
    Q_OBJECT

public:
    // The panel outlives it.
    RecordCards(const RecorderPanel &panel, QWidget *parent);

    // Whether the window shall be left; moot once what speaks against it has ended.
    void askToLeave(std::function<Card::Texts()> texts, std::function<void(int answer)> answered);
    bool isAskingToLeave() const { return mLeave->isAsking(); }
    // Gives the first answer to that question; false where it is not asked.
    bool keepToLeave();
    // What a crash has left.
    Card &leftovers() { return *mLeftovers; }
    // What was open in the editor.
    Card &edit() { return *mEdit; }
    // Offers the virtual device. answered: true to install it, which may take a while; the card says so meanwhile. Who
    // does not want it records the output, or the microphone.
    void offerVirtualDevice(std::function<void(bool installs)> answered);
    void tellVirtualDeviceInstalled();
    bool isOfferingDevice() const;

    void showState();
    void showTexts();
    // Closes the one in sight.
    void close();

Q_SIGNALS:
    void changed();
    void microphoneChosen();

private:
    void install(const std::function<void(bool)> &answered);

    const RecorderPanel &mPanel;
    Card *mLeave, *mLeftovers, *mDevice, *mEdit; // the most urgent first
    bool mIsRunning = false;
};

} // namespace cantorel::ui
