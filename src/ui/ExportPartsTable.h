#pragma once

#include <QTableView>

namespace cantorel {
class ZQAudioEditExportController;
}

namespace cantorel::ui {

// The parts of an export, one a row: what each is called and what its tags say. A key or a double click edits a cell,
// Tab goes to the next one.
class ExportPartsTable : public QTableView {
public:
    // exporting: outlives it.
    ExportPartsTable(ZQAudioEditExportController &exporting, QWidget *parent);

    void showTexts();
    // As many rows and columns as there are now.
    void showParts();

private:
    class Parts;

    Parts *mParts;
};

} // namespace cantorel::ui
