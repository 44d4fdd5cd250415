// Commands through the shell: exit codes, redirections, waiting and timeouts.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/os/command.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

class OsCommandTest : public OsTest {
 protected:
  void SetUp() override {
    OsTest::SetUp();
    char tmpl[] = "/tmp/zelv_cmd_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
    cwd_ = fs::current_path();
    fs::current_path(dir_);
  }
  void TearDown() override {
    fs::current_path(cwd_);
    fs::remove_all(dir_);
    OsTest::TearDown();
  }
  static std::string read(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  // What the command leaves on the standard output and error it inherits.
  std::pair<std::string, std::string> captured(std::string_view command, int flags) {
    const int out = dup(1), err = dup(2);
    const int to_out = open("captured.out", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int to_err = open("captured.err", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(to_out, 1);
    dup2(to_err, 2);
    IOsCommand(command, flags);
    dup2(out, 1);
    dup2(err, 2);
    for (int fd : {out, err, to_out, to_err}) close(fd);
    return {read("captured.out"), read("captured.err")};
  }
  static double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
  }
  std::string dir_;
  fs::path cwd_;
};

TEST_F(OsCommandTest, ExitCodeIsHandedOutNeverJudged) {
  // {command, exit code}
  const std::tuple<const char*, int> cases[] = {
      {"true", 0}, {"   exit 5   ", 5}, {"no_such_program_anywhere 2> /dev/null", 127}, {"sh -c 'exit 300'", 44}};
  for (const auto& [command, code] : cases) {
    int exit_code = -1;
    IOsCommand(command, kCmdWait, {}, nullptr, &exit_code);
    EXPECT_EQ(exit_code, code) << command;
    EXPECT_EQ(error(), 0) << command;
  }
  int exit_code = -1;
  IOsCommand("     ", kCmdWait, {}, nullptr, &exit_code);  // blank: nothing runs
  EXPECT_EQ(exit_code, -1);
  EXPECT_EQ(error(), 0);
}

TEST_F(OsCommandTest, RunsInTheProcessDirectoryWithItsOwnQuotesAndRedirections) {
  IOsCommand("printf '%s|' \"a  b\" 'c' > \"out file\"; pwd > where", kCmdWait);
  EXPECT_EQ(read("out file"), "a  b|c|");
  EXPECT_EQ(read("where"), fs::canonical(dir_).string() + "\n");
  EXPECT_EQ(error(), 0);
}

TEST_F(OsCommandTest, FlagsDiscardOutputAndErrors) {
  // The redirections apply to the last command of a list, so the test runs one.
  const std::string command = "{ echo out; echo err >&2; }";
  // {flags, standard output, standard error}
  const std::tuple<int, const char*, const char*> cases[] = {{kCmdWait, "out\n", "err\n"},
                                                             {kCmdWait | kCmdDiscardOutput, "", "err\n"},
                                                             {kCmdWait | kCmdDiscardErrors, "out\n", ""},
                                                             {kCmdWait | kCmdDiscardOutput | kCmdDiscardErrors, "", ""}};
  for (const auto& [flags, out, err] : cases) {
    const auto [got_out, got_err] = captured(command, flags);
    EXPECT_EQ(got_out, out) << flags;
    EXPECT_EQ(got_err, err) << flags;
  }
}

TEST_F(OsCommandTest, WithoutWaitingItReturnsAtOnce) {
  const auto start = Clock::now();
  int pid = 0, exit_code = -1;
  IOsCommand("sleep 0.3; exit 6", {}, {}, &pid, &exit_code);
  EXPECT_LT(seconds_since(start), 0.25);
  EXPECT_GT(pid, 0);
  EXPECT_EQ(exit_code, -1);  // nobody waited
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_EQ(WEXITSTATUS(status), 6);
}

TEST_F(OsCommandTest, TimeoutsStopTheWait) {
  // Timeout 0 polls no time at all; with the kill flag nothing is left running.
  auto start = Clock::now();
  int pid = -1, exit_code = -1;
  IOsCommand("sleep 5", kCmdWait | kCmdKillOnTimeout, 0, &pid, &exit_code);
  EXPECT_EQ(error(), 1034);
  EXPECT_LT(seconds_since(start), 1.0);
  EXPECT_EQ(pid, 0);
  EXPECT_EQ(exit_code, -1);

  // Without it the command goes on and its identifier is handed out.
  start = Clock::now();
  IOsCommand("sleep 5", kCmdWait | kCmdMilliseconds, 150, &pid);
  EXPECT_EQ(error(), 1034);
  EXPECT_GT(seconds_since(start), 0.1);
  EXPECT_LT(seconds_since(start), 1.0);
  ASSERT_GT(pid, 0);
  EXPECT_EQ(kill(pid, 0), 0);
  kill(pid, SIGKILL);
  waitpid(pid, nullptr, 0);

  // A timeout without the millisecond flag is in seconds.
  start = Clock::now();
  IOsCommand("sleep 0.3; exit 4", kCmdWait, 1, &pid, &exit_code);
  EXPECT_EQ(error(), 0);
  EXPECT_EQ(exit_code, 4);
  EXPECT_EQ(pid, 0);
  EXPECT_GT(seconds_since(start), 0.25);
}

TEST_F(OsCommandTest, CommandEndedBySignalIsAnError) {
  for (std::optional<int> timeout : {std::optional<int>{}, std::optional<int>{5}}) {
    zelvy_data::data().iapierr = -1;
    int exit_code = -1;
    IOsCommand("kill -9 $$", kCmdWait, timeout, nullptr, &exit_code);
    EXPECT_EQ(error(), 13);
    EXPECT_EQ(WInfoError(3), 0);
    EXPECT_EQ(exit_code, -1);
  }
}

}  // namespace

namespace {

std::vector<int> g_ticks;

// The layers above see a long wait begin, go on and end, in that order.
TEST_F(OsCommandTest, AWaitWithoutEndReportsItsProgress) {
  g_ticks.clear();
  yyossetcommandwaithook([](int ms) { g_ticks.push_back(ms); });
  int code = -1;
  IOsCommand("sleep 0.3; exit 4", kCmdWait, {}, nullptr, &code);
  yyossetcommandwaithook(nullptr);
  EXPECT_EQ(code, 4);
  ASSERT_GE(g_ticks.size(), 4u);
  EXPECT_EQ(g_ticks.front(), 0);
  EXPECT_EQ(g_ticks.back(), -1);
  for (std::size_t i = 2; i + 1 < g_ticks.size(); ++i) EXPECT_GE(g_ticks[i], g_ticks[i - 1]);
  EXPECT_GE(g_ticks[g_ticks.size() - 2], 250);
  // A bounded wait keeps its own schedule and calls no hook.
  g_ticks.clear();
  yyossetcommandwaithook([](int ms) { g_ticks.push_back(ms); });
  IOsCommand("true", kCmdWait | kCmdMilliseconds, 1000, nullptr, &code);
  yyossetcommandwaithook(nullptr);
  EXPECT_TRUE(g_ticks.empty());
}

}  // namespace
