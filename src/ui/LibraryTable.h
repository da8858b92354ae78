#pragma once

#include "ui/RecordingsTable.h"

#include <QString>

#include <unordered_set>
#include <vector>

namespace cantorel {
class LibraryPlayer;
class RecordedAudioInfo;
class RecordingsModel;
} // namespace cantorel

namespace cantorel::ui {

// The table of the library. What is selected, and what stands at its top, stays when rows come, go or change places.
// Owned by the library tab.
class LibraryTable : public RecordingsTable {
    Q_OBJECT

public:
    // Both outlive it.
    LibraryTable(RecordingsModel &model, LibraryPlayer &player, QWidget *parent);

    std::vector<RecordedAudioInfo *> selected() const;
    // Of several that are selected the one that the keys stand on; null for none.
    RecordedAudioInfo *chosen() const;
    void renameChosen();
    // So that the titles have room in a table of that width.
    void fitColumns(int width);

Q_SIGNALS:
    void playWanted(const QString &file);
    void choiceChanged();

private:
    void playOrPause(int row);
    void remember();
    void restore();
    QString longestDate() const;

    RecordingsModel &mModel;
    LibraryPlayer &mPlayer;
    // The items of the rows before a change; may be deleted by then, and are only compared.
    struct {
        std::unordered_set<const RecordedAudioInfo *> selected;
        const RecordedAudioInfo *current = nullptr, *top = nullptr;
        int column = 0;
    } mBefore;
};

} // namespace cantorel::ui
