#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "host/movies/HelperKeeper.h"
#include "host/render/Failure.h"
#include "host/render/HelperOutput.h"
#include "host/render/HelperWatch.h"
#include "host/render/Interrupts.h"
#include "host/render/PrivateFolder.h"
#include "host/render/Reporter.h"
#include "host/render/StallMeter.h"

namespace Corvel {

/// All that helper processes need around them: the private folder of the shared memory, the watch over them,
/// and somebody who listens to what they say. First it sweeps what killed runs have left. One a process at a
/// time; made and destroyed on one thread. Whoever starts a helper inside of a session must have stopped it
/// before the session ends.
///
/// A helper that dies while somebody waits for its answer leaves that thread waiting for ever. So the session
/// itself ends the process then: it says what was being done, names the movie so far, removes what is shared,
/// and leaves with exit code 4, no destructor run over the blocked thread. A third request to stop ends it
/// likewise, with exit code 130.
///
/// A helper that is stopped, or silent, is reported with its process number, "no progress for 10 s"; then the
/// second request to stop ends the process, and so does the timeout where there is one (exit code 4).
/// Helpers are never waited for without bound: one that does not end when it is asked to is killed.
class HelperSession : public HelperKeeper {
public:
    /// `frameBytes` is what one frame takes between host and helper; 0 where no frames are sent.
    HelperSession(std::uint64_t frameBytes, Reporter& reporter);
    ~HelperSession() override;

    /// Calls `startHelper`, which starts a helper and may wait for its first answers. Throws Failure
    /// (HelperFailed) for whatever that throws. Does not return in the child of a helper that could not be
    /// executed, which comes back into the host's code: that process ends at once, before it can touch what
    /// is the parent's.
    Helper start(const std::function<void()>& startHelper) override;

    /// A helper is waited for from now on.
    void setActivity(const std::string& newActivity) override;
    void setOwnActivity(Helper helper, const std::string& newActivity) override;
    /// No helper is waited for from now on; what is being done instead.
    void setIdle(const std::string& newActivity);
    /// The helper that is waited for has got on. Any thread.
    void signOfLife();
    /// How long without a sign of life a helper may be; without one, for ever.
    void setTimeout(std::optional<std::chrono::seconds> timeout);
    /// The file that the movie is written to for now. Any thread.
    void setPartialFile(const std::string& path);
    /// Ends the process at once, with exit code 130, as a third request to stop does. Any thread.
    [[noreturn]] void giveUp(const std::string& sentence);
    void expectEnd() override;

    /// Where host and helpers share memory; what is made there is swept away with the rest.
    const std::string& sharedFolder() const { return folder.path(); }

    const Interrupts& interrupts() const { return interrupts_; }

private:
    struct Started {
        explicit Started(std::function<void(const std::string&)> line) : output(std::move(line)) {}

        HelperOutput output;
        std::string ownActivity;
    };

    void helperDied(const Morvane::Platform::ProcessEnd& end);
    void look();
    void lookForGivingUp();
    void lookForStall();
    void lookForUnwillingHelper();
    Started& addHelper();
    void hearLastWords();
    void nameActivityOfDead();
    [[noreturn]] void abandon(Exit code, const std::string& sentence);

    const pid_t process = getpid();
    Reporter& reporter;
    std::mutex mutex;
    std::string activity = "starting";
    bool helperAwaited = true;
    StallMeter stall;
    std::optional<std::chrono::steady_clock::time_point>
        endDue;  // when helpers that were told to end must have
    std::string partialFile;
    PrivateFolder folder;
    Interrupts interrupts_;
    std::list<Started> helpers;  // in the order of their numbers
    std::optional<HelperWatch> watch;
};

}  // namespace Corvel
