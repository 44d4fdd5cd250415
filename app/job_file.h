// job_file: the job file's reader and writer, and where they send their
// messages. The routines belong to the data_proc module by name.
#pragma once

#include <functional>
#include <string_view>

namespace data_proc {
void read_ombrel_file();   // fills the job state from file_inp
void read_twinlaw();       // the twin block, on the job file being read
void write_ombrel_file();  // writes the job state to file_inp
}  // namespace data_proc

namespace job_file {

// Receives each message of the reader and writer. By default a message goes to
// lorx_io_messages::error_message; the batch code and the tests take them
// themselves. An empty sink restores the default.
using MessageSink = std::function<void(std::string_view)>;
void set_message_sink(MessageSink sink);

// Longest line the reader looks at; the rest of a longer line is ignored.
inline constexpr int line_width = 132;

}  // namespace job_file
