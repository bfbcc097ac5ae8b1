// A process in which no thread can be started.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

namespace rbk::test {

// While it lives, threads with the default stack ask for one that no machine has, and pthread_create answers EAGAIN.
class NoThreads {
 public:
    NoThreads()
    {
        pthread_getattr_default_np(&before_);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 50);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }
    ~NoThreads()
    {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

 private:
    pthread_attr_t before_;
};

}  // namespace rbk::test
