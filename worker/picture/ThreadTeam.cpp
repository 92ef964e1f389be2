#include "worker/picture/ThreadTeam.h"

namespace Morvane::Worker {

ThreadTeam::ThreadTeam(int size) {
    for (int member = 1; member < size; ++member)
        members.emplace_back([this, member] { runMember(member); });
}

ThreadTeam::~ThreadTeam() {
    {
        const std::lock_guard lock(mutex);
        stopping = true;
    }
    workAppeared.notify_all();
    for (std::thread& member : members)
        member.join();
}

void ThreadTeam::share(std::size_t count, const std::function<void(std::size_t, int)>& work) {
    std::unique_lock lock(mutex);
    job = &work;
    parts = openParts = count;
    nextPart = 0;
    if (count > 1)
        workAppeared.notify_all();
    takeParts(lock, 0);
    workEnded.wait(lock, [this] { return openParts == 0; });
    job = nullptr;
}

void ThreadTeam::runMember(int member) {
    std::unique_lock lock(mutex);
    while (true) {
        workAppeared.wait(lock, [this] { return stopping || (job && nextPart < parts); });
        if (stopping)
            return;
        takeParts(lock, member);
    }
}

void ThreadTeam::takeParts(std::unique_lock<std::mutex>& lock, int member) {
    while (job && nextPart < parts) {
        const std::size_t part = nextPart++;
        const auto& work = *job;
        lock.unlock();
        work(part, member);
        lock.lock();
        if (--openParts == 0)
            workEnded.notify_one();
    }
}

}  // namespace Morvane::Worker
