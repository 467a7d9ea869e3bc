#include "core/z_lock.h"

#include "core/z_exception.h"

namespace halvern {

bool ZLock::Acquire(int timeout)
{
    if (timeout == 0)
        return mutex_.try_lock();
    mutex_.lock();
    return true;
}

void ZLock::Release()
{
    mutex_.unlock();
}

ZLockHolder::ZLockHolder(ZLock& lock, int timeout) : lock_(lock)
{
    if (!lock_.Acquire(timeout))
        throw ZException("Could not acquire mutex.");
}

ZLockHolder::~ZLockHolder()
{
    lock_.Release();
}

} // namespace halvern
