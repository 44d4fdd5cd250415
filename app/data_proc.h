// data_proc: the routines that act on the job: the main loop and its commands.
// The job file's reader and writer stand in app/job_file.h.
#pragma once

namespace data_proc {

// 0 no failure, 1 a bad form field, -1 stop the program after this menu command.
inline int exit_code = 0;

void main_procedure();    // loads the job given at start, then runs the message loop

}  // namespace data_proc
