#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

namespace qvn::test {

/// What happened on other threads, in order. Waiting gives up after a deadline that only a hang reaches.
template <class Entry>
class Journal {
public:
    void add(Entry entry) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mEntries.push_back(std::move(entry));
        mChanged.notify_all();
    }
    void clear() {
        const std::lock_guard<std::mutex> lock(mMutex);
        mEntries.clear();
    }
    std::vector<Entry> entries() const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mEntries;
    }
    /// Waits for that many entries. Fewer come back only when the deadline has passed.
    std::vector<Entry> atLeast(std::size_t size) {
        waitForSize(size);
        return entries();
    }
    template <class Condition>
    bool waitUntil(Condition condition, std::chrono::milliseconds patience = std::chrono::seconds(60)) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, patience, [&] { return condition(mEntries); });
    }
    bool waitForSize(std::size_t size, std::chrono::milliseconds patience = std::chrono::seconds(60)) {
        return waitUntil([size](const std::vector<Entry>& entries) { return entries.size() >= size; }, patience);
    }

private:
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Entry> mEntries;
};

}  // namespace qvn::test
