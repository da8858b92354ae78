#pragma once

namespace cantorel::ui {

// Has readers of the screen know the wave and the fields for times; once.
void installEditorAccessibility();

} // namespace cantorel::ui
