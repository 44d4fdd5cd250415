// job_file: where the job file reader and writer send their messages.
// The routines themselves are data_proc::read_ombrel_file, read_twinlaw and
// write_ombrel_file (app/data_proc.h).
#pragma once

#include <functional>
#include <string_view>

namespace job_file {

// Receives each message of the reader and writer. By default a message goes to
// lorx_io_messages::error_message; the batch code and the tests take them
// themselves. An empty sink restores the default.
using MessageSink = std::function<void(std::string_view)>;
void set_message_sink(MessageSink sink);

// Longest line the reader looks at; the rest of a longer line is ignored.
inline constexpr int line_width = 132;

}  // namespace job_file
