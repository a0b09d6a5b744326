// Linked into every program of ours in a ThreadSanitizer build (CMakeLists.txt):
// the hand-overs between threads that happen inside the uninstrumented C
// library and Qt, told to the sanitizer, so that it reports only real races.
#include <QFutureInterfaceBase>

#include <dlfcn.h>
#include <sched.h>

#include <cstdarg>

extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);

namespace {

template <typename Function>
Function following(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// A future's shared state: the same in every copy of the future.
void* shared(const QFutureInterfaceBase* future)
{
    static_assert(sizeof(QFutureInterfaceBase) == 2 * sizeof(void*), "a vtable pointer, then d");
    return reinterpret_cast<void* const*>(future)[1];
}

} // namespace

// QtConcurrent::run hands a task to a pooled thread, and the result back,
// under locks inside Qt. The task sees what its starter did before
// reportStarted (it asks isCanceled first); whoever drops a copy of the
// future sees what the task did before reportFinished.
extern "C" void _ZN20QFutureInterfaceBase13reportStartedEv(QFutureInterfaceBase* self)
{
    static const auto real = following<void (*)(QFutureInterfaceBase*)>("_ZN20QFutureInterfaceBase13reportStartedEv");
    __tsan_release(shared(self));
    real(self);
}

extern "C" bool _ZNK20QFutureInterfaceBase10isCanceledEv(const QFutureInterfaceBase* self)
{
    static const auto real = following<bool (*)(const QFutureInterfaceBase*)>("_ZNK20QFutureInterfaceBase10isCanceledEv");
    __tsan_acquire(shared(self));
    return real(self);
}

extern "C" void _ZN20QFutureInterfaceBase14reportFinishedEv(QFutureInterfaceBase* self)
{
    static const auto real = following<void (*)(QFutureInterfaceBase*)>("_ZN20QFutureInterfaceBase14reportFinishedEv");
    __tsan_release(shared(self));
    real(self);
}

extern "C" bool _ZNK20QFutureInterfaceBase6derefTEv(const QFutureInterfaceBase* self)
{
    static const auto real = following<bool (*)(const QFutureInterfaceBase*)>("_ZNK20QFutureInterfaceBase6derefTEv");
    void* state = shared(self);
    __tsan_release(state);
    const bool alive = real(self);
    __tsan_acquire(state);
    return alive;
}

// The sanitizer takes every clone() for a fork, even one that shares the
// memory as vfork does, which is how QProcess starts a program: the child
// then marks the parent's own state as a forked child's, and the parent stops
// checking (GCC 12) or stops at a failed check (clang 14). Such a child only
// execs, so it goes past the sanitizer; any other clone goes through it.
extern "C" int clone(int (*run)(void*), void* stack, int flags, void* argument, ...)
{
    va_list rest;
    va_start(rest, argument);
    auto* parentTid = va_arg(rest, pid_t*);
    void* tls = va_arg(rest, void*);
    auto* childTid = va_arg(rest, pid_t*);
    va_end(rest);
    using Clone = int (*)(int (*)(void*), void*, int, void*, ...);
    static const auto sanitized = following<Clone>("clone");
    static const auto plain = reinterpret_cast<Clone>(dlsym(dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD), "clone"));
    const bool vforked = (flags & CLONE_VM) && !(flags & CLONE_THREAD);
    return (vforked ? plain : sanitized)(run, stack, flags, argument, parentTid, tls, childTid);
}
