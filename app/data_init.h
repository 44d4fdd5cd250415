// data_init: start-up of the program and the defaults of the job state.
#pragma once

#include <string>
#include <string_view>

namespace data_init {

void load_settings();   // var_system and var_sep
void line_arguments();  // the job file from the command line; changes directory
void main_window();     // toolkit, root window with the main form, status bar
void init_variables();  // the job state back to its defaults
// The job's name from its file name: up to the first dot, without it.
std::string job_name(std::string_view file);

}  // namespace data_init
