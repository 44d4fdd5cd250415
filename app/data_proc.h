// data_proc: the routines that act on the job: the main loop, the job file.
#pragma once

namespace data_proc {

// 0 no failure, 1 a bad form field, -1 stop the program after this menu command.
inline int exit_code = 0;

void main_procedure();    // loads the job given at start, then runs the message loop
void read_ombrel_file();  // fills the job state from file_inp
void read_twinlaw();      // the twin block, on the job file being read
void write_ombrel_file(); // writes the job state to file_inp

}  // namespace data_proc
