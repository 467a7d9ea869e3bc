#pragma once

// A re-entrant critical section. Acquire(0) tries once and fails at once when another
// thread holds the lock; any other timeout waits until the lock is free.

#include <mutex>

namespace halvern {

class ZLock {
public:
    bool Acquire(int timeout);
    void Release();

private:
    std::recursive_mutex mutex_;
};

// Holds a ZLock for its scope; throws ZException "Could not acquire mutex." when the
// lock cannot be taken.
class ZLockHolder {
public:
    ZLockHolder(ZLock& lock, int timeout);
    ~ZLockHolder();
    ZLockHolder(const ZLockHolder&) = delete;
    ZLockHolder& operator=(const ZLockHolder&) = delete;

private:
    ZLock& lock_;
};

} // namespace halvern
