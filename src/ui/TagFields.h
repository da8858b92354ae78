#pragma once

#include "recording/library/ID3EditWindowController.h"

#include <QWidget>

#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace cantorel::ui {

// The fields of the tag editor, with its buttons; hidden while there is nothing to edit. Part of the details.
class TagFields : public QWidget {
    Q_OBJECT

public:
    // tags: outlives it.
    TagFields(ID3EditWindowController &tags, QWidget *parent);

    void changeLanguageText();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QLineEdit *lineOf(int field) const;
    void chooseImage();
    void showTags();

    ID3EditWindowController &mTags;
    QWidget *mImage;
    QLabel *mImageLabel;
    QPushButton *mAddImage, *mDeleteImage, *mSave, *mClear;
    QComboBox *mGenre; // m_comID3tagGenre
    std::array<QWidget *, ID3EditWindowController::FieldCount> mFields{};
    std::array<QLabel *, ID3EditWindowController::FieldCount> mLabels{};
};

} // namespace cantorel::ui
