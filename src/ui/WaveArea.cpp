#include "ui/WaveArea.h"

#include "editor/ZQAudioEditorManager.h"
#include "ui/PageParts.h"
#include "ui/look/Look.h"

#include <QLabel>
#include <QProgressBar>

namespace cantorel::ui {

namespace {

constexpr int kBarWidth = 240;

} // namespace

WaveArea::WaveArea(ZQAudioEditorManager &manager, QWidget *parent)
    : QWidget(parent),
      mWave(new ZQAudioWave(manager.geometry(), manager, this)),
      mEdges(new ZQAudioDrawCutView(manager.geometry(), manager, this)),
      mHead(new ZQAudioPlayingPointView(*mWave, manager, this)),
      mNote(new QWidget(this)),
      mText(new QLabel(mNote)),
      mBar(new QProgressBar(mNote)) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    mHead->setObjectName(QStringLiteral("wave"));
    mHead->setFocusPolicy(Qt::StrongFocus);
    mText->setObjectName(QStringLiteral("editorProgress"));
    mText->setAlignment(Qt::AlignCenter);
    mText->setWordWrap(true);
    mBar->setObjectName(QStringLiteral("editorBar"));
    mBar->setTextVisible(false);
    mBar->setMaximumWidth(kBarWidth);
    auto *column = new QVBoxLayout(mNote);
    column->addStretch();
    column->addWidget(mText);
    column->addWidget(mBar, 0, Qt::AlignHCenter);
    column->addStretch();
    mBar->setMinimumWidth(kBarWidth / 2);
    setInk(*mText, Tokens::dark().text); // The ground is black in every scheme.
    mNote->setAttribute(Qt::WA_TransparentForMouseEvents);
    mNote->hide();
}

QSize WaveArea::minimumSizeHint() const { return {ZQAudioWave::kLeastHeight, ZQAudioWave::kLeastHeight}; }

void WaveArea::say(const QString &text, bool hasBar, int percent) {
    mText->setText(text);
    mBar->setAccessibleName(text);
    mBar->setVisible(hasBar);
    mBar->setRange(0, percent < 0 ? 0 : 100);
    if (percent >= 0)
        mBar->setValue(percent);
    mNote->setVisible(!text.isEmpty());
}

void WaveArea::resizeEvent(QResizeEvent *event) {
    for (QWidget *part :
         {static_cast<QWidget *>(mWave), static_cast<QWidget *>(mEdges), static_cast<QWidget *>(mHead), mNote})
        part->setGeometry(rect());
    QWidget::resizeEvent(event);
}

} // namespace cantorel::ui
