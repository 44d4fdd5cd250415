// Runs the program's first two start-up steps on its own command line and
// prints what they left in the job state, one field a line.
#include <cstdio>
#include <string>

#include "app/data_init.h"
#include "app/data_param.h"
#include "toolkit/os/files.h"

int main() {
  data_init::load_settings();
  data_init::line_arguments();
  std::string cwd;
  IOsDirName(cwd);
  using namespace data_param;
  std::printf("var_system=[%s]\n", std::string(var_system.view()).c_str());
  std::printf("var_sep=[%s]\n", std::string(var_sep.view()).c_str());
  std::printf("file_inp=[%s]\n", file_inp.str().c_str());
  std::printf("codefile=[%s]\n", codefile.str().c_str());
  std::printf("working_dir=[%s]\n", working_dir.str().c_str());
  std::printf("actual_dir=[%s]\n", actual_dir.str().c_str());
  std::printf("cwd=[%s]\n", cwd.c_str());
  return 0;
}
