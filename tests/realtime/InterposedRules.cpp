#include "realtime/ForkedRun.h"
#include "realtime/RenderThread.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>

// Replacements for functions of the C library. The dynamic linker uses them for every library of
// the process, so no allocation or lock bypasses them.

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the C library's own names
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace halvo::test {

namespace {

thread_local bool underRules = false;

void forbid(const char* what) {
    if (!underRules) return;
    underRules = false; // the report itself may do anything
    endWithOffence(what);
}

template <typename Function> Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

void runAsRenderThread(Work work, void* context) {
    underRules = true;
    work(context);
    underRules = false;
}

} // namespace halvo::test

using halvo::test::forbid;
using halvo::test::next;

extern "C" {

void* malloc(std::size_t size) {
    forbid("malloc");
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    forbid("calloc");
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    forbid("realloc");
    return __libc_realloc(memory, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    forbid("memalign");
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    forbid("aligned_alloc");
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    forbid("posix_memalign");
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}

void free(void* memory) {
    forbid("free");
    __libc_free(memory);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    forbid("pthread_mutex_lock");
    static auto* const real = next<int(pthread_mutex_t*)>("pthread_mutex_lock");
    return real(mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) {
    forbid("pthread_mutex_trylock");
    static auto* const real = next<int(pthread_mutex_t*)>("pthread_mutex_trylock");
    return real(mutex);
}

int pthread_rwlock_rdlock(pthread_rwlock_t* lock) {
    forbid("pthread_rwlock_rdlock");
    static auto* const real = next<int(pthread_rwlock_t*)>("pthread_rwlock_rdlock");
    return real(lock);
}

int pthread_rwlock_wrlock(pthread_rwlock_t* lock) {
    forbid("pthread_rwlock_wrlock");
    static auto* const real = next<int(pthread_rwlock_t*)>("pthread_rwlock_wrlock");
    return real(lock);
}

int pthread_cond_signal(pthread_cond_t* condition) {
    forbid("pthread_cond_signal");
    static auto* const real = next<int(pthread_cond_t*)>("pthread_cond_signal");
    return real(condition);
}

int pthread_cond_broadcast(pthread_cond_t* condition) {
    forbid("pthread_cond_broadcast");
    static auto* const real = next<int(pthread_cond_t*)>("pthread_cond_broadcast");
    return real(condition);
}

} // extern "C"
