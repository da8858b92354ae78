#pragma once

#include <QFrame>

class QFormLayout;

namespace cantorel {
class RecordedAudioInfo;
}

namespace cantorel::ui {

// What is known of one recording, in a small panel at its row. Escape or a click elsewhere closes it, and it is gone
// then. Texts can be selected and copied.
class RecordingInfo : public QFrame {
public:
    // date: as the table shows it.
    RecordingInfo(const RecordedAudioInfo &item, const QString &date, QWidget *parent);

    // Shows itself below the place, or above it where there is no room; in global coordinates.
    void showAt(const QRect &place);

private:
    void addRow(const QString &name, const QString &text);

    QFormLayout *mRows;
};

} // namespace cantorel::ui
