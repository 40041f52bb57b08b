#include "vancoreplatform/SinkSlot.h"

#include <mutex>
#include <thread>

#include "vancoreplatform/StaticObject.h"

namespace {

struct LockState {
    std::mutex mutex;
    std::atomic<std::thread::id> owner{};
};

LockState& GetLockState()
{
    return GetStaticObject<LockState>();
}

}  // namespace

SinkLock::SinkLock() : m_isOutermost(!IsMine())
{
    if (!m_isOutermost)
        return;
    LockState& state = GetLockState();
    state.mutex.lock();
    state.owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

SinkLock::~SinkLock()
{
    if (!m_isOutermost)
        return;
    LockState& state = GetLockState();
    state.owner.store(std::thread::id(), std::memory_order_relaxed);
    state.mutex.unlock();
}

bool SinkLock::IsMine() noexcept
{
    return GetLockState().owner.load(std::memory_order_relaxed) == std::this_thread::get_id();
}
