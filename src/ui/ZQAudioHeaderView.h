#pragma once

#include <QString>

class QToolButton;

namespace cantorel::ui {

class Page;

// Name and length of what is edited, and the button with the tools, in the header of the editor's page.
class ZQAudioHeaderView {
public:
    // Both outlive it.
    ZQAudioHeaderView(Page &page, QToolButton &tools) : mPage(page), mTools(tools) {}

    void setAudioFileName(const QString &name);
    void setAudioFileDurationFormat(const QString &duration);
    void setToolsButtonEnable(bool isEnabled);
    const QString &audioFileName() const { return mName; }

private:
    void show();

    Page &mPage;
    QToolButton &mTools;
    QString mName, mDuration;
};

} // namespace cantorel::ui
