#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "platform/ProcessWatch.h"
#include "processbridge/HostBundle.h"
#include "processbridge/ResourceNames.h"
#include "quicktime/Worker.h"
#include "tests/integration/real_worker/Commands.h"
#include "tests/integration/real_worker/RawController.h"
#include "tests/integration/real_worker/WorkerFixture.h"

namespace Morvane::Testing {
namespace {

using Platform::ProcessWatch;

class LifetimeTest : public WorkerFixture {
protected:
    static constexpr int frames = 10;

    /// Opens a movie and hands over its frames.
    void writeMovie(RawController& controller, const std::string& movie) {
        controller.ask("W00000009:0");
        controller.ask("W00000005:64:48:24:1:4:0", "timecode=01\\:00\\:00\\:00");
        EXPECT_EQ(controller.ask("W00000000:" + movie + ":1"), "0");
        for (int frame = 0; frame < frames; ++frame)
            EXPECT_EQ(controller.askWithZeros("W00000001:" + std::to_string(frame) + ":0", 64 * 48 * 16),
                      "0");
        EXPECT_EQ(controller.ask("W00000002"), "0");
    }

    int countFrames(const std::string& movie) {
        return std::stoi(outputOf({"ffprobe", "-v", "error", "-count_frames", "-select_streams", "v",
                                   "-show_entries", "stream=nb_read_frames", "-of", "csv=p=0", movie}));
    }

    std::string workerFile() {
        return ProcessBridge::hostBundleContentsPath() + std::string(QuickTime::workerPath).substr(2);
    }

    /// Runs the worker's program by hand; its exit code.
    int runWorker(const std::vector<std::string>& arguments) {
        const std::string file = workerFile();
        const pid_t child = fork();
        if (child == 0) {
            std::vector<char*> vector = {const_cast<char*>(file.c_str())};
            for (const std::string& argument : arguments)
                vector.push_back(const_cast<char*>(argument.c_str()));
            vector.push_back(nullptr);
            execv(file.c_str(), vector.data());
            _exit(127);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(LifetimeTest, EndsWithItsController) {
    auto sut = std::make_unique<RawController>(newBridgeName(), "write");
    const ProcessWatch worker(sut->workerProcess());

    sut.reset();

    EXPECT_TRUE(worker.isDead());
}

TEST_F(LifetimeTest, EndsWithItsControllerAlsoBeforeItIsReady) {
    for (int round = 0; round < 20; ++round)
        RawController sut(newBridgeName(), "write");
    SUCCEED();
}

TEST_F(LifetimeTest, LeavesAnOpenMoviePlayableWhenItIsStopped) {
    const std::string movie = path("stopped.mov");
    auto sut = std::make_unique<RawController>(newBridgeName(), "write");
    writeMovie(*sut, movie);

    sut.reset();

    EXPECT_EQ(countFrames(movie), frames);
}

/// In a process of its own, so that it can be killed with its controller in it.
TEST_F(LifetimeTest, EndsAndCleansUpWhenItsHostIsKilled) {
    const std::string movie = path("orphan.mov");
    const std::string name = newBridgeName();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t host = fork();
    if (host == 0) {
        auto* controller = new RawController(name, "write");
        writeMovie(*controller, movie);
        const pid_t worker = controller->workerProcess();
        [[maybe_unused]] const auto told = write(ends[1], &worker, sizeof worker);
        for (;;)
            pause();
    }
    pid_t worker = 0;
    ASSERT_EQ(read(ends[0], &worker, sizeof worker), static_cast<ssize_t>(sizeof worker));
    const ProcessWatch watch(worker);
    EXPECT_FALSE(watch.isDead());

    kill(host, SIGKILL);
    waitpid(host, nullptr, 0);

    // A second is the promise; a loaded machine gets some more before the test fails.
    EXPECT_EQ(watch.wait(std::chrono::seconds(10)), ProcessWatch::Outcome::Died);
    EXPECT_FALSE(semaphoreExists(name));
    EXPECT_EQ(countFrames(movie), frames);
    const std::string timecode =
        outputOf({"ffprobe", "-v", "error", "-show_entries", "stream_tags=timecode", movie});
    EXPECT_NE(timecode.find("01:00:00:00"), std::string::npos) << timecode;
    close(ends[0]);
    close(ends[1]);
}

TEST_F(LifetimeTest, OutlivesTheThreadThatMadeIt) {
    std::unique_ptr<RawController> sut;
    std::thread maker([&] {
        sut = std::make_unique<RawController>(newBridgeName(), "write");
        sut->ask("W0000000e");
    });
    maker.join();

    EXPECT_EQ(ProcessWatch(sut->workerProcess()).wait(std::chrono::milliseconds(300)),
              ProcessWatch::Outcome::TimedOut);
    EXPECT_NE(sut->ask("W0000000e").find("mjpa"), std::string::npos);
}

TEST_F(LifetimeTest, IgnoresWhatATerminalSendsToItsHostsGroup) {
    RawController sut(newBridgeName(), "write");
    sut.ask("W0000000e");

    for (const int signal : {SIGINT, SIGHUP, SIGQUIT, SIGPIPE})
        kill(sut.workerProcess(), signal);

    EXPECT_NE(sut.ask("W0000000e").find("mjpa"), std::string::npos);
}

TEST_F(LifetimeTest, IsStoppedThoughItsHostHasBlockedTheSignal) {
    sigset_t blocked, before;
    sigfillset(&blocked);
    pthread_sigmask(SIG_SETMASK, &blocked, &before);
    auto sut = std::make_unique<RawController>(newBridgeName(), "write");
    sut->ask("W0000000e");

    sut.reset();

    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(LifetimeTest, ClosesWhatItInherits) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    RawController sut(newBridgeName(), "write");
    sut.ask("W0000000e");

    close(ends[1]);
    char byte;
    // The end of the pipe shows at once: nobody else has it open.
    EXPECT_EQ(read(ends[0], &byte, 1), 0);
    close(ends[0]);
}

TEST_F(LifetimeTest, ExplainsHowItIsCalled) {
    EXPECT_EQ(runWorker({}), 2);
    EXPECT_EQ(runWorker({"0123456789abcdef0123456789abcdef", "dance"}), 2);
    EXPECT_EQ(runWorker({"../0123456789abcdef", "write"}), 2);
    EXPECT_NE(errors().find("usage: CorvelQuickTimeHelper-32 BRIDGE-NAME write|read"), std::string::npos)
        << errors();
}

TEST_F(LifetimeTest, RefusesABridgeThatDoesNotExist) {
    EXPECT_EQ(runWorker({"0123456789abcdef0123456789abcdef", "write"}), 1);
    EXPECT_NE(errors().find("cannot open semaphore"), std::string::npos) << errors();
}

}  // namespace
}  // namespace Morvane::Testing
