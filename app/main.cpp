// gombrel: the form-based front-end of the reduction code.
#include "app/data_init.h"
#include "app/data_proc.h"
#include "toolkit/kernel/window.h"

int main() {
  data_init::load_settings();
  data_init::line_arguments();
  data_init::main_window();
  data_proc::main_procedure();
  WindowClose();
  return 0;
}
