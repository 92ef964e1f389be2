#include "processbridge/NamedSemaphore.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <string>
#include <thread>

namespace {

using Morvane::ProcessBridge::NamedSemaphore;

/// A semaphore name of this process's own, also where the tests run many times at once.
class NamedSemaphoreTest : public testing::Test {
protected:
    NamedSemaphoreTest() { sem_unlink(name.c_str()); }
    ~NamedSemaphoreTest() override {
        EXPECT_FALSE(exists(name)) << "left behind";
        sem_unlink(name.c_str());
    }

    static bool exists(const std::string& name) { return valueOf(name) >= 0; }

    /// The semaphore's value; -1 when there is none of that name.
    static int valueOf(const std::string& name) {
        sem_t* semaphore = sem_open(name.c_str(), 0);
        if (semaphore == SEM_FAILED) {
            return -1;
        }
        int value = 0;
        sem_getvalue(semaphore, &value);
        sem_close(semaphore);
        return value;
    }

    const std::string name = "crv-test-" + std::to_string(getpid());
};

using NamedSemaphoreDeathTest = NamedSemaphoreTest;

TEST_F(NamedSemaphoreTest, IsCreatedWithItsInitialValueAndUnlinkedAtTheEnd) {
    {
        const NamedSemaphore sut(name, true, 3);
        EXPECT_EQ(valueOf(name), 3);
    }
    EXPECT_FALSE(exists(name));
}

TEST_F(NamedSemaphoreTest, OpensOneThatExists) {
    NamedSemaphore owner(name, true, 0);
    NamedSemaphore sut(name, false, 7);

    sut.release(2);

    EXPECT_EQ(valueOf(name), 2);
}

TEST_F(NamedSemaphoreTest, KeepsAShortNameAndCutsALongOneToThirtyCharacters) {
    const std::string longName = (name + std::string(40, 'x')).substr(0, 40);
    sem_unlink(longName.substr(0, 30).c_str());
    {
        const NamedSemaphore sut(longName, true, 0);
        EXPECT_TRUE(exists(longName.substr(0, 30)));
        EXPECT_FALSE(exists(longName));
    }
    EXPECT_FALSE(exists(longName.substr(0, 30)));
}

TEST_F(NamedSemaphoreTest, CountsPostsAndWaits) {
    NamedSemaphore sut(name, true, 0);

    EXPECT_TRUE(sut.release(3));
    EXPECT_EQ(valueOf(name), 3);
    EXPECT_TRUE(sut.acquire(2));
    EXPECT_EQ(valueOf(name), 1);
}

TEST_F(NamedSemaphoreTest, DoesNothingForCountsThatAreNone) {
    NamedSemaphore sut(name, true, 0);

    EXPECT_TRUE(sut.acquire(0));
    EXPECT_TRUE(sut.acquire(-1));
    EXPECT_TRUE(sut.acquire(INT_MIN));
    EXPECT_TRUE(sut.release(0));
    EXPECT_EQ(valueOf(name), 0);
}

TEST_F(NamedSemaphoreTest, GoesOnWaitingAfterASignal) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    struct sigaction before {};
    sigaction(SIGUSR1, &action, &before);
    NamedSemaphore sut(name, true, 0);
    std::atomic<bool> acquired = false;
    std::thread waiting([&] { acquired = sut.acquire(2); });

    sut.release(1);
    while (valueOf(name) != 0) {
        std::this_thread::yield();
    }
    for (int round = 0; round < 100; ++round) {
        pthread_kill(waiting.native_handle(), SIGUSR1);
        std::this_thread::yield();
    }
    EXPECT_FALSE(acquired);
    sut.release(1);
    waiting.join();

    EXPECT_TRUE(acquired);
    EXPECT_EQ(valueOf(name), 0);
    sigaction(SIGUSR1, &before, nullptr);
}

// Deliberate: the message is spelled like this, and the semaphore is unlinked all the same.
TEST_F(NamedSemaphoreTest, IsUnlinkedEvenIfItCannotBeClosed) {
    testing::internal::CaptureStderr();
    {
        const NamedSemaphore sut(name, true, 0);
        // One process has one handle for a name: close it behind the object's back.
        sem_t* const handle = sem_open(name.c_str(), 0);
        sem_close(handle);
        sem_close(handle);
    }

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Could not close sempahore: Invalid argument\n");
    EXPECT_FALSE(exists(name));
}

TEST_F(NamedSemaphoreDeathTest, AbortsWhereTheNameIsTaken) {
    const NamedSemaphore owner(name, true, 0);

    EXPECT_EXIT(NamedSemaphore(name, true, 0), testing::KilledBySignal(SIGABRT),
                "Could not open semaphore: ");
}

TEST_F(NamedSemaphoreDeathTest, AbortsWhereThereIsNothingToOpen) {
    EXPECT_EXIT(NamedSemaphore(name, false, 0), testing::KilledBySignal(SIGABRT),
                "Could not open semaphore: ");
}

TEST_F(NamedSemaphoreDeathTest, AbortsWhenTheCounterOverflows) {
    NamedSemaphore sut(name, true, SEM_VALUE_MAX);

    EXPECT_EXIT(sut.release(1), testing::KilledBySignal(SIGABRT), "Could not release semaphore: ");
}

// Deliberate: only a count of exactly 0 is caught; the counter is near its end here, so that it overflows
// soon.
TEST_F(NamedSemaphoreDeathTest, PostsUntilItAbortsForANegativeCount) {
    NamedSemaphore sut(name, true, SEM_VALUE_MAX - 2);

    EXPECT_EXIT(sut.release(-1), testing::KilledBySignal(SIGABRT), "Could not release semaphore: ");
    EXPECT_EQ(valueOf(name), SEM_VALUE_MAX);
}

}  // namespace
