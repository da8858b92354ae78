#include "ui/ZQAudioHeaderView.h"

#include "ui/Page.h"

#include <QToolButton>

namespace cantorel::ui {

void ZQAudioHeaderView::setAudioFileName(const QString &name) {
    mName = name;
    show();
}

void ZQAudioHeaderView::setAudioFileDurationFormat(const QString &duration) {
    mDuration = duration;
    show();
}

void ZQAudioHeaderView::setToolsButtonEnable(bool isEnabled) { mTools.setEnabled(isEnabled); }

void ZQAudioHeaderView::show() {
    mPage.setTitle(mDuration.isEmpty() ? mName : mName + QStringLiteral("   ") + mDuration);
}

} // namespace cantorel::ui
