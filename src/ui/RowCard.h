#pragma once

#include <QWidget>

#include <vector>

class QCheckBox;
class QGridLayout;
class QLabel;
class QVBoxLayout;

namespace cantorel::ui {

// A row of a card: at the left what it is, with a second line below; at the right a control and a switch, both
// optional.
class CardRow : public QWidget {
public:
    // beside: left and right of what it holds.
    explicit CardRow(QWidget *parent, int beside = 16);

    void setTexts(const QString &title, const QString &second = {});
    // Both are named after the row for those who are read to. A click anywhere on the row turns the switch.
    void setControl(QWidget &control);
    void setSwitch(QCheckBox &choice);
    // The control goes below the text.
    void setNarrow(bool isNarrow);

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void name(QWidget &widget) const;

    const int mBeside;
    QGridLayout *mGrid;
    QLabel *mTitle, *mSecond;
    QWidget *mControl = nullptr;
    QCheckBox *mSwitch = nullptr;
};

// Rows in one frame with hairlines between them.
class RowCard : public QWidget {
public:
    explicit RowCard(QWidget *parent);

    CardRow &addRow();
    void setNarrow(bool isNarrow);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QVBoxLayout *mColumn;
    std::vector<CardRow *> mRows;
};

} // namespace cantorel::ui
