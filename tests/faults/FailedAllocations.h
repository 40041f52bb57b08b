// Runs an operation again and again while another allocation fails each time.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>

#include "tests/common/TestMemory.h"
#include "vancorexml/main/parser/AddressSanitizer.h"

// The kinds of faults that a test goes through.
struct FaultMode {
    const char* name;
    AllocationFaults::Kind kind;
    bool forever;
};

inline void PrintTo(const FaultMode& mode, std::ostream* out)
{
    *out << mode.name;
}

inline constexpr FaultMode FaultModes[] = {
    {"OneNew", AllocationFaults::Kind::New, false},
    {"AllNew", AllocationFaults::Kind::New, true},
    {"OneMalloc", AllocationFaults::Kind::Malloc, false},
    {"AllMalloc", AllocationFaults::Kind::Malloc, true},
};

// A test for each kind of faults.
class FaultTest : public testing::TestWithParam<FaultMode> {
protected:
    void SetUp() override
    {
        if (GetParam().kind == AllocationFaults::Kind::Malloc && !AllocationFaults::CanFailMalloc)
            GTEST_SKIP() << "on Windows, and with a sanitizer, a program cannot replace malloc";
    }

    // Returns the number of the next allocation that fails. Beyond the first 500 (50 with the address sanitizer), some
    // are left out to keep the tests short. The environment variable VANCOREXML_ALL_ALLOCATION_FAULTS includes them.
    static long NextNumber(long number)
    {
        const bool all = std::getenv("VANCOREXML_ALL_ALLOCATION_FAULTS") != nullptr;
        return number + (all || number < (HasAddressSanitizer ? 50 : 500) ? 1 : 1 + number / 20);
    }

    // Calls `run` while the first allocation fails, then while the second one fails, and so on until none fails. A run
    // must return a result, or throw std::bad_alloc. Calls `check` with each result, and with true if an allocation
    // failed. At most `mostLost` blocks may stay allocated after a run. `run` must not use macros of the test, because
    // these allocate. `next` returns the number of the next allocation that fails.
    template <typename Run, typename Check>
    void FailEachAllocation(Run run, Check check, std::size_t mostLost = 0, long (*next)(long) = NextNumber)
    {
        // Fills all caches. The first exception of a thread may allocate memory that the thread keeps.
        check(run(), false);
        try {
            throw std::bad_alloc();
        } catch (const std::bad_alloc&) {
        }
        for (long number = 0;; number = next(number)) {
            const LiveMemory before = CountLiveMemory();
            std::optional<std::invoke_result_t<Run>> result;
            std::optional<std::string> unexpected;
            AllocationFaults::Begin(GetParam().kind, number, GetParam().forever);
            bool hasFailed = false;
            try {
                result.emplace(run());
                hasFailed = AllocationFaults::End();
            } catch (const std::bad_alloc&) {
                hasFailed = AllocationFaults::End();
            } catch (const std::exception& exception) {
                hasFailed = AllocationFaults::End();
                unexpected = exception.what();
            } catch (...) {
                hasFailed = AllocationFaults::End();
                unexpected = "another exception";
            }
            EXPECT_EQ(unexpected.value_or("none"), "none") << "after " << number << " allocations";
            unexpected.reset();
            if (result)
                check(*result, hasFailed);
            result.reset();
            const LiveMemory after = CountLiveMemory();
            EXPECT_LE(after.blocks, before.blocks + mostLost) << "after " << number << " allocations";
            EXPECT_LE(after.mallocBlocks, before.mallocBlocks + mostLost) << "after " << number << " allocations";
            if (HasFailure())
                return;
            if (!hasFailed)
                return;
        }
    }
};

#define INSTANTIATE_FAULT_TEST(Name)                                                                                   \
  INSTANTIATE_TEST_SUITE_P(                                                                                            \
      Faults, Name, testing::ValuesIn(FaultModes), [](const auto& mode) { return mode.param.name; })
