#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Morvane::Worker {

/// Threads that stay alive between frames and share out the parts of one job. The caller is one of them, so a
/// team of 1 has no thread of its own.
class ThreadTeam {
public:
    /// `size` threads at work, the caller's included; at least 1.
    explicit ThreadTeam(int size);
    ~ThreadTeam();
    ThreadTeam(const ThreadTeam&) = delete;
    ThreadTeam& operator=(const ThreadTeam&) = delete;

    int size() const { return static_cast<int>(members.size()) + 1; }

    /// Calls `work(part, member)` once for each part in [0, parts), `member` being in [0, size()) and never
    /// the same in two threads at a time. Returns when all parts are done. One call at a time; `work` does
    /// not throw.
    void share(std::size_t parts, const std::function<void(std::size_t part, int member)>& work);

private:
    void runMember(int member);
    void takeParts(std::unique_lock<std::mutex>& lock, int member);

    std::mutex mutex;
    std::condition_variable workAppeared;
    std::condition_variable workEnded;
    const std::function<void(std::size_t, int)>* job = nullptr;  ///< null between jobs
    std::size_t parts = 0;
    std::size_t nextPart = 0;
    std::size_t openParts = 0;
    bool stopping = false;
    std::vector<std::thread> members;
};

}  // namespace Morvane::Worker
