#pragma once

#include <QString>

#include <array>

namespace cantorel {

// What a field for a time shows and how it is changed: hours, minutes, seconds, milliseconds, one of which may have the
// focus. No widget; main thread.
class TimeField {
public:
    enum Part { None = -1, Hour, Minute, Second, Millisecond, PartCount };
    using Parts = std::array<int, PartCount>;

    // Milliseconds are rounded, as printing them does.
    static Parts parseTimeFromTimeInval(double seconds);
    static QString stringHour(int number);
    static QString stringMinute(int number) { return stringHour(number); }
    static QString stringSecond(int number) { return stringHour(number); }
    static QString stringMS(int number);
    // format: "hh-mm-ss-sss", or the first of these parts. Two digits are deliberately all that milliseconds are filled
    // up to.
    static QString timeStringFormat(double seconds, const QString &format);
    // With three digits of milliseconds, as the field shows it.
    static QString wholeText(double seconds);

    double time() const { return mTime; }
    void setTime(double seconds) { mTime = seconds; }
    void setMinTime(double seconds) { mLeast = seconds; }
    void setMaxTime(double seconds) { mMost = seconds; }
    void setTime(double seconds, double MinValue, double MaxValue);

    Part focusOnIndex() const { return mFocusOnIndex; }
    void focus(Part part) { mFocusOnIndex = part; }
    // How far the stepper and the arrow keys go; 0 without a focus.
    double increment() const;
    static int digits(Part part) { return part == Millisecond ? 3 : 2; }
    static int largest(Part part);
    QString text(Part part) const;

    // Each answers whether the time is another now.
    // By the stepper: the seconds take the focus where nothing has it; a step below zero is none.
    bool step(int direction);
    // By an arrow key, for which a part has the focus.
    bool press(int direction);
    // A number was typed in place of that part; below 0 counts as 0.
    bool type(Part part, int number);

private:
    bool change(double seconds);

    double mTime = 0, mLeast = 0, mMost = 0;
    Part mFocusOnIndex = None;
};

} // namespace cantorel
