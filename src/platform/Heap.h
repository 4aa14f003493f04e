#pragma once

namespace ostrelle
{

// Gives the system back what the heap holds and does not use, when that is much: by itself it keeps
// what lies below something that is still in use. To be called after work that took much memory.
// Any thread.
void trimHeap();

} // namespace ostrelle
