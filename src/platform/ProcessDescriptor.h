#pragma once

#include "platform/Files.h"

#include <sys/types.h>

// glibc 2.36 declares these functions without C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace ostrelle
{

// A descriptor for the process that has this number now, and for no other: the number may be a
// stranger's as soon as that process has ended. Invalid, with errno set, when there is no such
// process or no descriptor is left.
inline Descriptor processDescriptor(pid_t pid)
{
    return Descriptor(::pidfd_open(pid, 0));
}

// False when the process is not there any more.
inline bool sendSignal(const Descriptor &process, int signal)
{
    return ::pidfd_send_signal(process.get(), signal, nullptr, 0) == 0;
}

} // namespace ostrelle
