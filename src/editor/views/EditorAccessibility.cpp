#include "editor/views/EditorAccessibility.h"

#include "editor/views/ZQAudioPlayingPointView.h"
#include "editor/views/ZQAudioTimeView.h"

#include <QAccessibleWidget>

namespace cantorel::ui {

namespace {

// A time that can be set, in seconds; its text is the time as it is shown.
class TimeInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit TimeInterface(ZQAudioTimeView &view) : QAccessibleWidget(&view, QAccessible::SpinBox), mView(view) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text text) const override {
        return text == QAccessible::Value ? TimeField::wholeText(mView.time()) : QAccessibleWidget::text(text);
    }
    QVariant currentValue() const override { return mView.time(); }
    void setCurrentValue(const QVariant &value) override { mView.change(value.toDouble()); }
    QVariant minimumValue() const override { return 0; }
    QVariant maximumValue() const override { return {}; }
    QVariant minimumStepSize() const override { return 0.001; }
    QStringList actionNames() const override { return {increaseAction(), decreaseAction(), setFocusAction()}; }
    void doAction(const QString &action) override {
        if (action == increaseAction() || action == decreaseAction())
            mView.controlTimeValueStrpper(action == increaseAction() ? 1 : -1);
        else
            QAccessibleWidget::doAction(action);
    }

private:
    ZQAudioTimeView &mView;
};

QAccessibleInterface *interfaceOf(const QString &, QObject *object) {
    // The caller owns the result.
    if (auto *view = dynamic_cast<ZQAudioTimeView *>(object))
        return new TimeInterface(*view);
    if (auto *head = dynamic_cast<ZQAudioPlayingPointView *>(object))
        return new QAccessibleWidget(head, QAccessible::Graphic);
    return nullptr;
}

} // namespace

void installEditorAccessibility() {
    QAccessible::removeFactory(interfaceOf);
    QAccessible::installFactory(interfaceOf);
}

} // namespace cantorel::ui
