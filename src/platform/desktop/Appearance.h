#pragma once

#include <functional>

namespace cantorel::desktop {

// How the person has set the desktop to look.
struct AppearanceState {
    enum class Scheme { Unknown, Light, Dark };

    Scheme scheme = Scheme::Unknown;
    bool isContrastHigh = false;
    bool isMotionReduced = false;
    bool operator==(const AppearanceState &) const = default;
};

// The desktop's settings for how programs look. Main thread.
class Appearance {
public:
    virtual ~Appearance() = default;

    using Listener = std::function<void(const AppearanceState &)>;
    // Asks the desktop without waiting. The listener is called once the desktop has answered and after each change that
    // the person makes; never where no desktop answers. An empty one ends that.
    virtual void listen(Listener listener) = 0;
};

} // namespace cantorel::desktop
