#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/wait.h>

namespace {

struct Outcome {
    std::string output;
    int status = -1;
};

/// Runs the script by the system's perl as the application does, with standard output read.
Outcome run(const std::string& arguments) {
    const std::string line =
        "/usr/bin/perl '" HALVO_HELPER_SCRIPT "' " + arguments + " 2>/dev/null";
    FILE* pipe = ::popen(line.c_str(), "r");
    if (pipe == nullptr) return {};
    Outcome outcome;
    std::array<char, 256> buffer{};
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr)
        outcome.output += buffer.data();
    const int status = ::pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

TEST(HelperScriptTests, CallsTheEntryOfTheWord) {
    const std::string library = "'" HALVO_HELPER_STAND_IN "'";
    struct Case {
        const char* name;
        std::string arguments;
        std::string output;
        bool isTaken;
        int status; ///< where it is taken
    };
    const Case cases[] = {
        {"the stream", library + " loop", "a line\n", true, 0},
        {"a command's own status", library + " next_track", "", true, 3},
        {"a word without an entry", library + " rewind", "", false, 0},
        {"no word of a helper", library + " 'loop;'", "", false, 0},
        {"one word too many", library + " loop loop", "", false, 0},
        {"no such library", "/no/such/library loop", "", false, 0},
    };
    for (const auto& [name, arguments, output, isTaken, status] : cases) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.output, output) << name;
        if (isTaken) {
            EXPECT_EQ(outcome.status, status) << name;
        } else {
            EXPECT_GT(outcome.status, 0) << name;
        }
    }
}

} // namespace
