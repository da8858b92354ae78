#pragma once

#include <memory>

namespace cantorel::foundation {

// A deleter that calls one release function, so that a handle of a C library costs no more than the pointer.
template <auto Release> struct ReleaseWith {
    template <class T> void operator()(T *handle) const noexcept { Release(handle); }
};

// Owns a handle of a C library. Each library has one header of aliases, the only place that names its release
// functions.
template <class T, auto Release> using Handle = std::unique_ptr<T, ReleaseWith<Release>>;

} // namespace cantorel::foundation
