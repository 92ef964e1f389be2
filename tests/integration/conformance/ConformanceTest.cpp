#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

namespace {

struct Trial {
    int exitCode;
    std::string table;

    // The line of that promise in that mode with the reason that follows it, if any.
    std::string lineOf(const std::string& mode, const std::string& promise) const {
        const std::size_t at = table.find(mode + std::string(13 - mode.size(), ' ') + promise);
        if (at == std::string::npos) {
            return "";
        }
        std::size_t end = table.find('\n', at);
        if (table.compare(end + 1, 13, std::string(13, ' ')) == 0) {
            end = table.find('\n', end + 1);
        }
        return table.substr(at, end - at);
    }
};

Trial tryWorker(const std::string& worker, const std::string& environment = "") {
    const std::string command =
        environment + std::string(CONFORMANCE_PROGRAM) + " '" + worker + "' 2>/dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    Trial run{-1, ""};
    std::array<char, 4096> buffer;
    while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe)) {
        run.table.append(buffer.data(), count);
    }
    run.exitCode = WEXITSTATUS(pclose(pipe));
    return run;
}

TEST(Conformance, OursKeepsEveryPromise) {
    const Trial run = tryWorker(OUR_WORKER);

    EXPECT_EQ(run.exitCode, 0) << run.table;
    EXPECT_EQ(run.table.find("FAILS"), std::string::npos) << run.table;
    EXPECT_NE(run.table.find("26 of 26 promises hold"), std::string::npos) << run.table;
}

struct Wrong {
    const char* way;
    const char* mode;
    const char* promise;
    const char* reason;
};

class WrongWorker : public testing::TestWithParam<Wrong> {};

TEST_P(WrongWorker, FailsWithTheReason) {
    const Wrong& wrong = GetParam();

    const Trial run = tryWorker(std::string(WRONG_WORKERS) + "/wrong_worker_" + wrong.way);

    EXPECT_EQ(run.exitCode, 1) << run.table;
    const std::string line = run.lineOf(wrong.mode, wrong.promise);
    EXPECT_NE(line.find("FAILS"), std::string::npos) << run.table;
    EXPECT_NE(line.find(wrong.reason), std::string::npos) << run.table;
}

INSTANTIATE_TEST_SUITE_P(
    Conformance, WrongWorker,
    testing::Values(
        Wrong{"AnswersTwice", "write", "answers every request once", "one request was answered 2 times"},
        Wrong{"DiesOfGarbage", "read", "survives requests that cannot be read", "the worker ended"},
        Wrong{"DeafToSigterm", "write", "ends within a second of SIGTERM", "alive one second after SIGTERM"},
        Wrong{"OutlivesItsHost", "write", "ends within a second of the host's death",
              "its host had been killed"},
        Wrong{"ListsNamesOnly", "write", "lists codecs as type, tab and name", "\"Motion JPEG A\" is not"}),
    [](const auto& one) { return one.param.way; });

TEST(Conformance, RefusesWhatIsNoProgram) {
    EXPECT_EQ(tryWorker("/no/such/worker").exitCode, 2);
    EXPECT_EQ(tryWorker("/tmp").exitCode, 2);
}

TEST(Conformance, LeavesNothingBehind) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("conformance-test-" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);

    tryWorker(std::string(WRONG_WORKERS) + "/wrong_worker_OutlivesItsHost",
              "TMPDIR=" + folder.string() + " ");

    EXPECT_TRUE(std::filesystem::is_empty(folder));
    std::filesystem::remove_all(folder);
}

}  // namespace
