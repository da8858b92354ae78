#include "ui/Accessibility.h"

#include "recording/control/LevelDisplay.h"
#include "ui/MeterView.h"
#include "ui/SoundPictureView.h"

#include <QAccessibleWidget>
#include <QButtonGroup>
#include <QToolButton>

namespace cantorel::ui {

namespace {

class MeterInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit MeterInterface(MeterView &meter) : QAccessibleWidget(&meter, QAccessible::ProgressBar), mMeter(meter) {}

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface *>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text text) const override {
        return text == QAccessible::Value ? currentValue().toString() : QAccessibleWidget::text(text);
    }
    QVariant currentValue() const override { return mMeter.level().litSteps(); }
    void setCurrentValue(const QVariant &) override {} // It only shows.
    QVariant minimumValue() const override { return 0; }
    QVariant maximumValue() const override { return LevelDisplay::kSteps; }
    QVariant minimumStepSize() const override { return 1; }

private:
    MeterView &mMeter;
};

// One of several buttons of which one is down.
class ChoiceInterface : public QAccessibleWidget {
public:
    explicit ChoiceInterface(QToolButton &button)
        : QAccessibleWidget(&button, QAccessible::RadioButton), mButton(button) {}

    QString text(QAccessible::Text text) const override {
        const QString own = QAccessibleWidget::text(text);
        return text == QAccessible::Name && own.isEmpty() ? mButton.text() : own;
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = mButton.isChecked();
        return state;
    }
    QStringList actionNames() const override { return {toggleAction(), setFocusAction()}; }
    void doAction(const QString &action) override {
        if (action == toggleAction())
            mButton.click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    QToolButton &mButton;
};

QAccessibleInterface *interfaceOf(const QString &, QObject *object) {
    // The caller owns the result.
    if (auto *meter = dynamic_cast<MeterView *>(object))
        return new MeterInterface(*meter);
    if (auto *picture = dynamic_cast<SoundPictureView *>(object))
        return new QAccessibleWidget(picture, QAccessible::Graphic);
    auto *button = qobject_cast<QToolButton *>(object);
    if (button && button->group() && button->group()->exclusive())
        return new ChoiceInterface(*button);
    return nullptr;
}

} // namespace

void installAccessibility() { QAccessible::installFactory(interfaceOf); }

} // namespace cantorel::ui
