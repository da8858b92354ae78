#include "ui/RecordingInfo.h"

#include "lang/Lang.h"
#include "recording/library/RecordedAudioInfo.h"

#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QScreen>

namespace cantorel::ui {

namespace {

constexpr int kWidest = 46; // letters of a line before it is broken

} // namespace

RecordingInfo::RecordingInfo(const RecordedAudioInfo &item, const QString &date, QWidget *parent)
    : QFrame(parent, Qt::Popup), mRows(new QFormLayout(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("recordingInfo"));
    setAccessibleName(Lang::commFileInformation());
    setFrameShape(QFrame::StyledPanel);
    const QFileInfo file(item.getFileName());
    addRow(Lang::commFileName(), file.fileName());
    addRow(Lang::windowFolder(), QDir::toNativeSeparators(file.path()));
    addRow(Lang::commFormat(), file.suffix().toUpper());
    addRow(Lang::windowArtist(), item.artist());
    addRow(Lang::windowAlbum(), item.album());
    addRow(Lang::windowLength(), item.duration());
    addRow(Lang::commSize(), item.size());
    addRow(Lang::commDateAdded(), date);
    addRow(Lang::windowState(), file.exists() ? item.status() : Lang::tabPlaylistNoFile());
}

// What there is nothing to say about is left out.
void RecordingInfo::addRow(const QString &name, const QString &text) {
    if (text.isEmpty())
        return;
    auto *value = new QLabel(text, this);
    value->setTextFormat(Qt::PlainText);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    value->setAccessibleName(name + QStringLiteral(": ") + text);
    value->setMaximumWidth(value->fontMetrics().averageCharWidth() * kWidest);
    value->setWordWrap(true);
    auto *label = new QLabel(name, this);
    label->setBuddy(value);
    mRows->addRow(label, value);
}

void RecordingInfo::showAt(const QRect &place) {
    adjustSize();
    const QRect room = parentWidget()->screen()->availableGeometry() & parentWidget()->window()->frameGeometry();
    const int below = place.bottom() + 1;
    const int y = below + height() <= room.bottom() ? below : place.top() - height();
    move(qBound(room.left(), place.left(), qMax(room.left(), room.right() - width())), qMax(room.top(), y));
    show();
    setFocus(Qt::PopupFocusReason);
}

} // namespace cantorel::ui
