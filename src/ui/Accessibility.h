#pragma once

namespace cantorel::ui {

// Tells readers of the screen what the program's own controls are: the level a value, the picture a graphic, the
// sources a choice of one. To be called before the first window is made. Main thread.
void installAccessibility();

} // namespace cantorel::ui
