#include "vancorexml/main/parser/XercesPlatform.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>

#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/datatype/DatatypeValidatorFactory.hpp>
#include <xercesc/validators/schema/SchemaSymbols.hpp>

#include "vancoreplatform/ProcessEnd.h"
#include "vancorexml/main/parser/XercesMemory.h"
#include "vansys/InitOnce.h"

namespace {

// The memory of Xerces that belongs to no reader.
//
// Xerces cannot continue, and cannot be terminated, if an allocation fails while it is being initialised. So its
// initialisation has a reserve for this case.
//
// Thread-safe, except BeginReserve and EndReserve.
class GlobalMemory final : public xercesc::MemoryManager {
public:
    // Throws std::bad_alloc.
    void BeginReserve()
    {
        m_reserve = std::make_unique_for_overwrite<std::byte[]>(ReserveSize);
        m_used = 0;
        m_isReserveOpen = true;
    }
    // Frees the reserve if it was not needed.
    void EndReserve() noexcept
    {
        if (m_used == 0)
            m_reserve.reset();
        m_isReserveOpen = false;
    }

    void* allocate(XMLSize_t size) override
    {
        void* const block = ::operator new(size, std::nothrow);
        return block ? block : AllocateFromReserve(size);
    }
    void deallocate(void* block) override
    {
        if (!IsInReserve(block))
            ::operator delete(block);
    }
    xercesc::MemoryManager* getExceptionMemoryManager() override { return this; }

private:
    // In bytes. The initialisation needs 750,000.
    static constexpr std::size_t ReserveSize = 2'000'000;

    void* AllocateFromReserve(std::size_t size)
    {
        constexpr std::size_t Alignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
        if (!m_isReserveOpen || size > ReserveSize - m_used)
            throw XercesOutOfMemory();
        std::byte* const block = m_reserve.get() + m_used;
        m_used = std::min(ReserveSize, m_used + (size + Alignment - 1) / Alignment * Alignment);
        return block;
    }
    bool IsInReserve(const void* block) const noexcept
    {
        const auto* const byte = static_cast<const std::byte*>(block);
        return m_used != 0 && !std::less<>()(byte, m_reserve.get()) &&
            std::less<>()(byte, m_reserve.get() + ReserveSize);
    }

    std::unique_ptr<std::byte[]> m_reserve;
    std::size_t m_used = 0;  // of the reserve, in bytes
    bool m_isReserveOpen = false;
};

// Without it, Xerces would end the process if it cannot be initialised.
class ThrowingPanicHandler final : public xercesc::PanicHandler {
public:
    // Rethrows the exception that Xerces has caught, such as a std::bad_alloc, if there is one. If a converter cannot
    // be created, there is none: ICU calls malloc, and its failure leaves only this value in errno.
    void panic(const PanicReasons reason) override
    {
        if (std::current_exception())
            throw;
        if (errno == ENOMEM)
            throw std::bad_alloc();
        throw std::runtime_error(std::string("Xerces cannot be initialised: ") + getPanicReasonString(reason));
    }
};

struct Platform {
    GlobalMemory memory;
    ThrowingPanicHandler panicHandler;
    std::mutex mutex;
    bool isInitialised = false;  // guarded by mutex, like the other members
    // The exception that ended the initialisation. Xerces can neither try again nor be terminated then.
    std::exception_ptr failure;
    bool isExiting = false;
    int uses = 0;
};

Platform& GetPlatform()
{
    // Never destroyed, because static objects that are destroyed later may still release Xerces. Not on the
    // heap, because each unload of the library would leak it.
    alignas(Platform) static std::byte place[sizeof(Platform)];
    static Platform* const platform = new (place) Platform;
    return *platform;
}

// All threads share the built-in types, three of which have a pattern. A pattern completes each of its character
// classes when it first reaches it, without a lock. If two threads did that at once, an assertion of Xerces would end
// the process. So each pattern gets a value here that reaches all its classes.
void CompleteBuiltInPatterns()
{
    using xercesc::SchemaSymbols;
    xercesc::DatatypeValidatorFactory factory;
    factory.getDatatypeValidator(SchemaSymbols::fgDT_LANGUAGE)->validate(u"en-US");
    factory.getDatatypeValidator(SchemaSymbols::fgDT_INTEGER)->validate(u"+1");
    factory.getDatatypeValidator(xercesc::XMLUni::fgNmTokenString)->validate(u"a");
}

// The caller must hold the mutex.
void Initialise(Platform& platform)
{
    platform.memory.BeginReserve();
    errno = 0;  // see ThrowingPanicHandler
    try {
        xercesc::XMLPlatformUtils::Initialize(
            xercesc::XMLUni::fgXercescDefaultLocale, nullptr, &platform.panicHandler, &platform.memory);
        CompleteBuiltInPatterns();
    } catch (...) {
        platform.failure = std::current_exception();
        throw;
    }
    platform.memory.EndReserve();
    platform.isInitialised = true;
}

// The caller must hold the mutex.
void TerminateWhenUnused(Platform& platform)
{
    if (platform.isExiting && platform.isInitialised && platform.uses == 0) {
        xercesc::XMLPlatformUtils::Terminate();
        platform.isInitialised = false;
    }
}

void OnExit()
{
    if (IsProcessEnding())
        return;
    Platform& platform = GetPlatform();
    const std::lock_guard lock(platform.mutex);
    platform.isExiting = true;
    TerminateWhenUnused(platform);
}

void RegisterExitHook()
{
    static InitOnce once;
    once([] {
        std::atexit(OnExit);
        WatchProcessEnd();
    });
}

}  // namespace

XercesInitializer::XercesInitializer()
{
    RegisterExitHook();
    Platform& platform = GetPlatform();
    const std::lock_guard lock(platform.mutex);
    if (platform.failure)
        std::rethrow_exception(platform.failure);
    if (!platform.isInitialised)
        Initialise(platform);
    ++platform.uses;
}

XercesInitializer::~XercesInitializer()
{
    if (IsProcessEnding())
        return;
    Platform& platform = GetPlatform();
    const std::lock_guard lock(platform.mutex);
    --platform.uses;
    TerminateWhenUnused(platform);
}
