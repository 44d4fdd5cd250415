// data_init: start-up of the program and the defaults of the job state.
#pragma once

namespace data_init {

void load_settings();   // var_system and var_sep
void line_arguments();  // the job file from the command line; changes directory
void main_window();     // toolkit, root window with the main form, status bar
void init_variables();  // the job state back to its defaults

}  // namespace data_init
