#pragma once

#include <cstddef>
#include <new>

namespace ostrelle
{

// A static object without an end: when a library ends the program with exit(), the threads of the
// pools still run, and may use it, while the other static objects are being destroyed.
template<typename T>
class NeverDestroyed
{
public:
    NeverDestroyed() { ::new (static_cast<void *>(m_storage)) T; }
    NeverDestroyed(const NeverDestroyed &) = delete;
    NeverDestroyed &operator=(const NeverDestroyed &) = delete;

    T &object() { return *std::launder(reinterpret_cast<T *>(m_storage)); }

private:
    alignas(T) std::byte m_storage[sizeof(T)];
};

} // namespace ostrelle
