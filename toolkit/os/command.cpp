#include "toolkit/os/command.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <ctime>

#include "toolkit/base/error.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/zelvy_data.h"

extern char** environ;

namespace {

constexpr int kNoError = 0, kSystemError = 13, kTimedOut = 1034;
constexpr int kShellNotRun = 127;

void sleep_ms(int ms) {
  timespec t{ms / 1000, static_cast<long>(ms % 1000) * 1000000L};
  while (::nanosleep(&t, &t) != 0 && errno == EINTR) {
  }
}

// How often and how far apart a bounded wait looks at the child: short waits
// look every millisecond, long ones every tenth of a second.
struct PollPlan {
  int polls, interval_ms;
};
PollPlan poll_plan(int timeout_ms) {
  if (timeout_ms < 10) return {timeout_ms, 1};
  if (timeout_ms <= 1000) return {10, timeout_ms / 10};
  return {timeout_ms / 100, 100};
}

// The identifier is handed out only for a command that goes on running.
int ended(int wait_status, CommandStatus& status) {
  status.process_id = 0;
  if (!WIFEXITED(wait_status)) {
    status.os_error = 0;
    return kSystemError;
  }
  status.exit_code = WEXITSTATUS(wait_status);
  return kNoError;
}

CommandWaitHook wait_hook = nullptr;
constexpr int kHookInterval = 50;

// A descriptor that becomes readable when the child ends, so that a wait in
// slices wakes at once instead of at the end of the slice. Without it (an
// older kernel) the slice is slept through.
class ChildEnd {
 public:
  explicit ChildEnd(pid_t pid) {
#ifdef SYS_pidfd_open
    fd_ = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
    (void)pid;
#endif
  }
  ~ChildEnd() {
    if (fd_ >= 0) ::close(fd_);
  }
  ChildEnd(const ChildEnd&) = delete;
  ChildEnd& operator=(const ChildEnd&) = delete;
  void wait(int ms) const {
    if (fd_ < 0) return sleep_ms(ms);
    pollfd p{fd_, POLLIN, 0};
    ::poll(&p, 1, ms);
  }

 private:
  int fd_ = -1;
};

// Waits for ever, calling the hook between looks at the child.
int wait_with_hook(pid_t pid, CommandStatus& status) {
  int wait_status = 0;
  const ChildEnd end(pid);
  wait_hook(0);
  timespec start{};
  ::clock_gettime(CLOCK_MONOTONIC, &start);
  for (;;) {
    const pid_t got = ::waitpid(pid, &wait_status, WNOHANG);
    if (got == pid) break;
    if (got < 0 && errno != EINTR) {
      status.os_error = errno;
      wait_hook(-1);
      return kSystemError;
    }
    end.wait(kHookInterval);
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const long ms = (now.tv_sec - start.tv_sec) * 1000L + (now.tv_nsec - start.tv_nsec) / 1000000L;
    wait_hook(static_cast<int>(std::min(ms, static_cast<long>(INT_MAX))));
  }
  wait_hook(-1);
  return ended(wait_status, status);
}

}  // namespace

void yyossetcommandwaithook(CommandWaitHook hook) { wait_hook = hook; }

// Whatever our own streams hold goes out before a child starts: otherwise it
// would come out twice (copied into the child) or after the child's output.
void yyflushbuffer() { std::fflush(nullptr); }

int yyoscommand2(const std::string& command, int flags, int timeout_ms, CommandStatus& status) {
  status = {};
  yyflushbuffer();
  const pid_t pid = ::fork();
  if (pid < 0) {
    status.os_error = errno;
    return kSystemError;
  }
  if (pid == 0) {
    const char* argv[] = {"sh", "-c", command.c_str(), nullptr};
    ::execve("/bin/sh", const_cast<char* const*>(argv), environ);
    ::_exit(kShellNotRun);  // no exit handlers in the child: they belong to the parent
  }
  status.process_id = pid;
  if (!(flags & kCmdWait)) return kNoError;

  int wait_status = 0;
  if (timeout_ms < 0 && wait_hook) return wait_with_hook(pid, status);
  if (timeout_ms < 0) {
    // Only this child is waited for: the statuses of others stay for their owners.
    while (::waitpid(pid, &wait_status, 0) < 0) {
      if (errno != EINTR) {
        status.os_error = errno;
        return kSystemError;
      }
    }
    return ended(wait_status, status);
  }
  const PollPlan plan = poll_plan(timeout_ms);
  for (int i = 0; i < plan.polls; ++i) {
    const pid_t got = ::waitpid(pid, &wait_status, WNOHANG);
    if (got == pid) return ended(wait_status, status);
    if (got < 0 && errno != EINTR) {
      status.os_error = errno;
      return kSystemError;
    }
    sleep_ms(plan.interval_ms);
  }
  if (flags & kCmdKillOnTimeout) {
    ::kill(pid, SIGKILL);
    while (::waitpid(pid, &wait_status, 0) < 0 && errno == EINTR) {
    }
    status.process_id = 0;
  }
  return kTimedOut;
}

int yyoscommand(std::string_view command, int flags, int timeout_ms, CommandStatus& status) {
  std::string line(command);
  if (flags & kCmdDiscardOutput) line += " > /dev/null";
  if (flags & kCmdDiscardErrors) line += " 2> /dev/null";
  return yyoscommand2(line, flags, timeout_ms, status);
}

int yyoscommandprint(std::string_view command, std::string_view routine) {
  // Wait and both redirections; the other bits of this number mean nothing here.
  constexpr int kPrintFlags = 115;
  CommandStatus status;
  const int err = yyoscommand(command, kPrintFlags, -1, status);
  if (err != 0) {
    zelvy_data::data().iapierr = status.os_error;
    yyerror(err, routine);
  }
  return status.exit_code.value_or(-1);
}

void IOsCommand(std::string_view command, std::optional<int> flags, std::optional<int> timeout, int* process_id,
                int* exit_code) {
  if (is_blank(command)) return;
  const int f = flags.value_or(0);
  int t = timeout.value_or(-1);
  if (t > 0 && !(f & kCmdMilliseconds)) t = t > INT_MAX / 1000 ? INT_MAX : t * 1000;
  yyflushbuffer();
  CommandStatus status;
  const int err = yyoscommand(left_trimmed(trimmed(command)), f, t, status);
  if (process_id) *process_id = status.process_id;
  if (exit_code && status.exit_code) *exit_code = *status.exit_code;
  if (err == kSystemError) zelvy_data::data().iapierr = status.os_error;
  if (err != kNoError) yyerror(err, "IOsCommand");
}
