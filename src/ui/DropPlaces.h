#pragma once

#include <QStringList>
#include <QWidget>

#include <vector>

class QDropEvent;

namespace cantorel::ui {

// Takes the files that are dropped on a page, and asks while they hover what they are dropped for: places split a part
// of the page, and the one below the pointer is marked. Beside them files are added.
class DropPlaces : public QWidget {
    Q_OBJECT

public:
    // own: what is dragged from there comes from the page itself, and is refused. Both are of the page.
    DropPlaces(QWidget &page, QWidget &part, const QWidget &own);

Q_SIGNALS:
    void convertWanted(const QStringList &files);
    void editWanted(const QString &file);
    void addWanted(const QStringList &files);

private:
    enum class Place { Convert, Edit, Add };
    struct Area {
        Place place;
        QRect rect;
    };
    std::vector<Area> areas() const;
    void open(const QStringList &files);
    void hover(const QPoint &position);
    void drop(const QStringList &files);
    bool eventFilter(QObject *page, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

    QWidget &mPart;
    const QWidget &mOwn;
    bool mCanEdit = false;
    Place mHovered = Place::Add;
};

} // namespace cantorel::ui
