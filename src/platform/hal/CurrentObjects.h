#pragma once

namespace cantorel::hal {

class ObjectTable;

// The table of the living hardware system, for the functions of the API; null when there is none.
ObjectTable *currentObjects();

} // namespace cantorel::hal
