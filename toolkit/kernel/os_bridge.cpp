// The kernel's start-up view of the operating-system layer.
#include "toolkit/kernel/os_bridge.h"

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/os/files.h"

namespace kernel_os {

std::string env(const char* name) {
  std::string value;  // unbounded
  IOsVariable(name, value);
  return value;
}

char env_char(const char* name) {
  std::string value(1, ' ');  // a one-character field: a longer value is error 1023 and blank
  IOsVariable(name, value);
  return value[0];
}

bool file_exists(const std::string& path) { return !path.empty() && iosfileexists(path); }

int arg_count() { return yyosargcount(); }

void exit_program(std::string_view message, int code) { IOsExitProgram(message, code); }

}  // namespace kernel_os
