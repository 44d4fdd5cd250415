// The few operating-system services the kernel needs before anything else is
// up: environment, file existence, argument count, and the immediate exit.
#pragma once

#include <string>
#include <string_view>

namespace kernel_os {

// Value of an environment variable; blank (empty) when unset.
std::string env(const char* name);
// The first character of a variable that may hold one character only: a
// longer value reads as blank and leaves error 1023, as a fixed one-character
// receiving field would.
char env_char(const char* name);
bool file_exists(const std::string& path);
// Number of command-line arguments, without the program name.
int arg_count();
// Writes "Abnormal exit (code N) : message" when message is not blank and ends
// the process with the code at once.
[[noreturn]] void exit_program(std::string_view message, int code);

}  // namespace kernel_os
