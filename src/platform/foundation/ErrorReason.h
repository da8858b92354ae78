#pragma once

#include "platform/foundation/Sentence.h"

namespace cantorel::foundation {

// Why a call to the system failed, by its errno: a part of a sentence, which stands behind a colon. What people seldom
// meet is told by its number.
Sentence errorReason(int error);

} // namespace cantorel::foundation
