#include <signal.h>

#include <fstream>
#include <iterator>

#include "e2e/Desk.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

/// Tests at a terminal, which `script` makes.
class Prompt : public DeskTest {
protected:
    /// Starts a command of the shell and waits until it shows a text.
    std::unique_ptr<Process> terminal(const std::string& command, const std::string& shows) const {
        auto process = desk.start("script -qec '" + command + "' /dev/null",
                                  {{"XDG_STATE_HOME", desk.directory()}, {"TERM", "xterm"}});
        EXPECT_TRUE(process->waitForOutput(shows)) << process->output();
        return process;
    }

    /// The number that stands behind a word in the output.
    static pid_t numberBehind(const std::string& word, const Process& process) {
        const std::string output = process.output();
        return std::stoi(output.substr(output.rfind(word) + word.size()));
    }
};

TEST_F(Prompt, CompletesKeepsAHistoryAndTellsWhatIsWrong) {
    const auto prompt = terminal("can-service-sim", "> ");
    prompt->write("EPB1_EP\t=5\rEPB1!late\r");
    ASSERT_TRUE(prompt->waitForOutput("'late' is not known here"));
    prompt->write("show EPB*\r");
    ASSERT_TRUE(prompt->waitForOutput("EPB1_EPBSts                              5"));
    prompt->write("DCT5_TGS_LEVER=\t\t");
    ASSERT_TRUE(prompt->waitForOutput("P       R       ramp"));
    prompt->write("R\rBCM1!\t\t");
    ASSERT_TRUE(prompt->waitForOutput("delay    ok       silence  timeout"));
    prompt->write("o\t\rshow DCT5*\r");
    EXPECT_TRUE(prompt->waitForOutput("DCT5_TGS_LEVER                           2 R")) << prompt->output();
    EXPECT_TRUE(prompt->waitForOutput("BCM1 ok"));
    prompt->write("quit\r");
    EXPECT_EQ(prompt->wait(), 0);
    std::ifstream history(desk.directory() + "/can-service-sim-history");
    const std::string lines{std::istreambuf_iterator<char>(history), {}};
    EXPECT_NE(lines.find("EPB1_EPBSts=5\n"), std::string::npos) << lines;
    const auto next = terminal("can-service-sim", "> ");
    next->write("\x1B[A\r\x04");
    EXPECT_TRUE(next->waitForOutput("DCT5_TGS_LEVER                           0 P")) << next->output();
    EXPECT_EQ(next->wait(), 0);
}

// What the editor does in the middle of a key, and a terminal that takes no output, is no matter of the service.
TEST_F(Prompt, NothingThatHappensAtTheTerminalHoldsUpTheService) {
    const auto prompt = terminal("echo process=$$; exec can-service-sim -v", "> ");
    const auto watch = desk.watch("HAP_FD1_APS_ProcBar");
    const auto answers = [&](const char* keys) {
        const auto set = desk.run("vehiclectl set HUT6_CarMdlDispCmd 1 --wait-for HAP_FD2_CarMdlDispSts=1");
        EXPECT_EQ(set.exitCode, 0) << "after " << keys << ": " << set.errors;
    };
    for (const char* const keys : {"\x1B", "OP", "\x1BOP", "\x1B[5~", "\x12", "\x12x\x1B", "\x16", "\x18", "\x18\x05",
                                   "\t\t", "y", "\x1F", "\xC3", "\x15"}) {
        prompt->write(keys);
        answers(keys);
    }
    for (const std::size_t length : {3072U, 100000U}) {
        prompt->write("\x15" + std::string(length, 'x') + "\r");
        EXPECT_TRUE(prompt->waitForOutput("a line of " + std::to_string(length) + " characters is too long"));
        answers("a long line");
    }
    prompt->write("HAP_FD1_APS_ProcBar=step 7,8 every 0.001\r");
    ASSERT_TRUE(waitForValue(*watch, "HAP_FD1_APS_ProcBar", 8));
    prompt->write("\x13");  // Ctrl-S
    answers("Ctrl-S");
    const std::size_t seen = watch->output().size();
    EXPECT_TRUE(watch->waitForOutput([&](const std::string& output) { return output.size() > seen + 10'000; }));
    kill(numberBehind("process=", *prompt), SIGTERM);
    EXPECT_EQ(prompt->wait(), 0);
}

TEST_F(Prompt, AJobComesAndGoesAndLeavesTheTerminalAsItWas) {
    const auto shell = terminal("bash --norc -i", "bash-");
    const auto shows = [&](const std::string& keys, const std::string& text) {
        const std::size_t from = shell->output().size();
        shell->write(keys);
        EXPECT_TRUE(shell->waitForOutput([&](const std::string& output) {
            return output.find(text, from) != std::string::npos;
        })) << keys
            << shell->output().substr(from);
    };
    shows("can-service-sim &\r", "service up");
    shows("fg\r", "> ");
    shows("EPB1_EPBSts=7\rshow EPB*\r", "EPB1_EPBSts                              7");
    shows("\x1A", "Stopped");
    shows("stty -a\r", " icanon ");
    shows("bg\r", "can-service-sim &");
    EXPECT_EQ(desk.run("vehiclectl get EPB1_EPBSts").exitCode, 0);
    shows("fg\r", "> ");
    shows("\x03", "bash-");
    shows("stty -a\r", " icanon ");
    shows("sh -c \"echo process=\\$\\$; exec can-service-sim\"\r", "> ");
    kill(numberBehind("process=", *shell), SIGKILL);
    EXPECT_TRUE(shell->waitForOutput("Killed"));
    shows("stty -a\r", " icanon ");
}

}  // namespace
}  // namespace qvn::e2e
