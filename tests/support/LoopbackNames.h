#pragma once

#include <QStringList>

namespace cantorel::test {

// What the backends of tests take for loopback devices, the one that the software devices install first.
inline const QStringList kLoopbackNames{"Tessolar_AudioDevice", "System Sound", "Soundflower (2ch)"};

} // namespace cantorel::test
