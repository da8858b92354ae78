#pragma once

#include "editor/views/ZQAudioDrawCutView.h"
#include "editor/views/ZQAudioPlayingPointView.h"
#include "editor/views/ZQAudioWave.h"

class QLabel;
class QProgressBar;

namespace cantorel {
class ZQAudioEditorManager;
}

namespace cantorel::ui {

// The wave with what lies over it: selections, head, and in its middle what is going on or why there is nothing. It has
// the keys of the editor. Part of its page.
class WaveArea : public QWidget {
public:
    // manager: outlives it.
    WaveArea(ZQAudioEditorManager &manager, QWidget *parent);

    ZQAudioWave &wave() { return *mWave; }
    ZQAudioDrawCutView &edges() { return *mEdges; }
    ZQAudioPlayingPointView &head() { return *mHead; }
    // percent: below 0 for a bar without an end, nothing for none.
    void say(const QString &text, bool hasBar, int percent);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override { return minimumSizeHint(); }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    ZQAudioWave *mWave;
    ZQAudioDrawCutView *mEdges;
    ZQAudioPlayingPointView *mHead;
    QWidget *mNote;
    QLabel *mText;
    QProgressBar *mBar;
};

} // namespace cantorel::ui
