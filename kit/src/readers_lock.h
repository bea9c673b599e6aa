// A lock for values that many threads read and few write.

#ifndef LAPWING_KIT_SRC_READERS_LOCK_H
#define LAPWING_KIT_SRC_READERS_LOCK_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <thread>

namespace lapwing {

// Threads that read count themselves in different places, so that they do not slow each other down,
// and a thread that writes does not wait for those that come after it. To write, lock it. A thread
// must not lock it or read twice at once.
class ReadersLock {
public:
    // Reads are allowed while it lives.
    class Reading {
    public:
        explicit Reading(ReadersLock& lock) : readers(lock.readersOfThisThread()) {
            while (!lock.enter(readers)) {
                const std::lock_guard writerIsDone(lock.writers);
            }
        }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;
        ~Reading() { --readers; }

    private:
        std::atomic<int>& readers;
    };

    void lock() {
        writers.lock();
        isWritten = true;
        for (const Place& place : places) {
            while (place.readers != 0) {
                std::this_thread::yield();
            }
        }
    }

    void unlock() {
        isWritten = false;
        writers.unlock();
    }

private:
    static constexpr std::size_t cacheLine = 64;
    struct alignas(cacheLine) Place {
        std::atomic<int> readers{0};
    };

    bool enter(std::atomic<int>& readers) {
        ++readers;
        if (isWritten) {
            --readers;
            return false;
        }
        return true;
    }

    // The stacks of threads are far apart, by powers of two: multiplying mixes their addresses.
    std::atomic<int>& readersOfThisThread() {
        const char onStack = 0;
        const std::uint64_t page = reinterpret_cast<std::uintptr_t>(&onStack) >> 16U;
        return places[static_cast<std::size_t>(page * 0x9E3779B97F4A7C15 >> 61U)].readers;
    }

    std::array<Place, 8> places;
    std::atomic<bool> isWritten{false};
    std::mutex writers;
};

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_READERS_LOCK_H
