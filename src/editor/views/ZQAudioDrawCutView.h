#pragma once

#include "editor/views/ZQAudioWave.h"

#include <QWidget>

namespace cantorel::ui {

// The handles of the selections and their numbers, over the wave. Takes no mouse.
class ZQAudioDrawCutView : public QWidget {
public:
    // Both outlive it.
    ZQAudioDrawCutView(const WaveGeometry &geometry, const AudioCutRequestDelegate &delegate, QWidget *parent);

    // Its numbers are painted anew; handles are with what they part in the wave below.
    void cutsDidChange();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const WaveGeometry &mGeometry;
    const AudioCutRequestDelegate &mDelegate;
};

} // namespace cantorel::ui
