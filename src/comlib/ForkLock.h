// A lock that the child of a host that forks finds free, whichever thread holds it meanwhile.
#ifndef QOR_COMLIB_FORKLOCK_H
#define QOR_COMLIB_FORKLOCK_H

#include <pthread.h>

#include <mutex>
#include <type_traits>

namespace comlib {

static_assert(std::is_trivially_destructible_v<std::mutex>,
              "not destroyed at exit while another thread may still ask");

// To be called once, when the library is loaded. A fork waits for the lock. The C library forgets
// this when the library is unloaded.
template <std::mutex& MUTEX>
void KeepFreeInForks() {
    const auto lock = [] { MUTEX.lock(); };
    const auto unlock = [] { MUTEX.unlock(); };
    pthread_atfork(lock, unlock, unlock);
}

}  // namespace comlib

#endif  // QOR_COMLIB_FORKLOCK_H
