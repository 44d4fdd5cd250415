// data_proc: the routines that act on the job: the main loop and its commands.
// The job file's reader and writer stand in app/job_file.h.
#pragma once

#include <optional>
#include <string_view>

namespace data_proc {

// 0 no failure, 1 a bad form field, -1 stop the program after this menu command.
inline int exit_code = 0;

void main_procedure();    // loads the job given at start, then runs the message loop
// Shows a file in an editor child window and returns when that is closed:
// the file given, or the job's name with the extension.
void view_file_with_editor(std::string_view extension, std::optional<std::string_view> file = {});

}  // namespace data_proc
