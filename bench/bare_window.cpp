// A Qt window with one label, and nothing else: the peer of bench/window.py.

#include <QApplication>
#include <QLabel>

#include <cstdio>

namespace {

class Label : public QLabel {
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent *event) override {
        QLabel::paintEvent(event);
        if (!mHasPainted)
            std::fputs("first frame\n", stderr);
        mHasPainted = true;
    }

private:
    bool mHasPainted = false;
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    Label label(QStringLiteral("Cantorel"));
    label.resize(820, 600);
    label.show();
    return QApplication::exec();
}
