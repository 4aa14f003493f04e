// Qt starts a child in the parent's memory. There GCC 12's thread sanitizer lets go of its own
// locks twice, in the child and in the parent, and soon dies of it. So the child gets a copy.

#include <cstdarg>
#include <dlfcn.h>
#include <sched.h>
#include <sys/types.h>

// As the C library declares it: the last three are the parent's place for the number, the thread's
// own data and the child's place for the number.
extern "C" int clone(int (*function)(void *), void *stack, int flags, void *argument, ...)
{
    va_list more;
    va_start(more, argument);
    auto *const parentPlace = va_arg(more, pid_t *);
    void *const ownData = va_arg(more, void *);
    auto *const childPlace = va_arg(more, pid_t *);
    va_end(more);
    static auto *const next = reinterpret_cast<decltype(&::clone)>(::dlsym(RTLD_NEXT, "clone"));
    return next(function, stack, flags & ~CLONE_VM, argument, parentPlace, ownData, childPlace);
}
