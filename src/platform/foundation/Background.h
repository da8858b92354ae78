#pragma once

namespace cantorel::foundation {

// From now on the calling thread takes only what nobody else wants of the processor and the disk; what the system
// refuses leaves it as it is. Safe between fork and exec too, where it holds for the program to be.
void standBack();

} // namespace cantorel::foundation
