#pragma once

#include "tests/support/PrivateDisplay.h"

namespace cantorel::test {

// The X server that the windows of this test stand on, with its keyboard.
inline const PrivateDisplay *screenOfThisProcess = nullptr;

} // namespace cantorel::test
