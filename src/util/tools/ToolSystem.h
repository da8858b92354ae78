#pragma once

namespace cantorel {

// Class operations on power and on defaults of the user interface. Main thread. The keep-awake thread is the only
// state.
class ToolSystem {
public:
    ToolSystem() = delete;

    // Keeps the machine awake until it is called with false, at the latest when the program ends its event loop. The
    // run loop that never returns lives on a thread of its own, so this returns at once.
    static void setAllowKeepSystemWakeEnable(bool enable);

    // Stores the whole seconds before a tooltip shows.
    static void setSystemDefaultTooltipsShowTimeInterval(double seconds);
};

} // namespace cantorel
