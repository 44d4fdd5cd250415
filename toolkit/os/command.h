// Running a command line through the shell.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Flags of IOsCommand.
enum CommandFlags : int {
  kCmdWait = 2,              // wait for the command to end
  kCmdKillOnTimeout = 4,     // kill it when the timeout runs out
  kCmdMilliseconds = 8,      // the timeout is in milliseconds, not seconds
  kCmdDiscardOutput = 0x20,  // " > /dev/null"
  kCmdDiscardErrors = 0x40,  // " 2> /dev/null"
};

// Runs the command line (blank: nothing) through /bin/sh in the process's
// directory. Without kCmdWait it returns at once with the process identifier;
// with it, it waits for ever for a negative timeout, else up to the timeout, and
// then fails with error 1034 (killing the command with kCmdKillOnTimeout, else
// handing out its identifier). The exit code is handed out, never judged; a
// failure to start or wait, or a command ended by a signal, is error 13.
void IOsCommand(std::string_view command, std::optional<int> flags = {}, std::optional<int> timeout = {},
                int* process_id = nullptr, int* exit_code = nullptr);

// A command waited for without end may take minutes: the layers above keep
// the screen alive meanwhile. The hook is called before the first look at the
// command (0), about every 50 ms with the milliseconds waited so far, and
// once it has ended (-1). Null: the wait just blocks.
using CommandWaitHook = void (*)(int elapsed_ms);
void yyossetcommandwaithook(CommandWaitHook hook);

// ---------------------------------------------------------------------------
// The layer below. Results are toolkit error codes: 0, 13 with the system's
// error number in `os_error` (0 for a command ended by a signal), or 1034.

struct CommandStatus {
  int process_id = 0;
  std::optional<int> exit_code;  // set when the command ended normally
  int os_error = 0;
};

// Appends the redirections the flags ask for and runs the command. A negative
// timeout waits for ever.
int yyoscommand(std::string_view command, int flags, int timeout_ms, CommandStatus& status);
// Sends a file to a print command: waits for ever, both outputs discarded; a
// failure is raised under `routine`, the public routine at work. Returns the
// command's exit code, -1 when it did not end normally.
int yyoscommandprint(std::string_view command, std::string_view routine);
// Writes out what the process's buffered files hold.
void yyflushbuffer();
// Runs the command line as it stands.
int yyoscommand2(const std::string& command, int flags, int timeout_ms, CommandStatus& status);
