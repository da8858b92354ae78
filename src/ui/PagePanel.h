#pragma once

#include <QWidget>

class QBoxLayout;
class QLabel;

namespace cantorel::ui {

// A panel beside the content of a page: a title, fields one below the other that scroll when they must, and buttons
// that always stay in sight.
class PagePanel : public QWidget {
public:
    explicit PagePanel(QWidget *parent);

    void setTitle(const QString &title);
    QString title() const;
    // Where the fields go, and below them what stays in sight: notes and buttons.
    QBoxLayout &fields() { return *mFields; }
    QBoxLayout &notes() { return *mNotes; }
    QBoxLayout &buttons() { return *mButtons; }
    // A label, and a field below it whose name it is.
    QLabel &addField(QWidget &field);
    // Has room for a table where it stands beside the content.
    void setWide(bool isWide);
    // Whether it covers the page, whose header says its title then.
    void setCovering(bool isCovering);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QLabel *mTitle;
    QWidget *mForm;
    QBoxLayout *mFields, *mNotes, *mButtons;
    bool mIsCovering = false, mIsWide = false;
};

} // namespace cantorel::ui
