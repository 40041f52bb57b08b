// Threads with small call stacks, on systems with POSIX threads.
#pragma once

#include <cstddef>
#include <functional>

#include <gtest/gtest.h>
#include <pthread.h>

namespace testsupport {

// Runs `run` on a thread with a stack of that size in bytes.
inline void RunWithStack(std::size_t size, std::function<void()> run)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, size);
    pthread_t thread;
    const auto start = [](void* function) -> void* {
        (*static_cast<std::function<void()>*>(function))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &run), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace testsupport
