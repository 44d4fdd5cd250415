// The main form (dialog 102) and the job state.
#pragma once

namespace data_proc {

void write_dialog_info();  // the form shows the job state

}  // namespace data_proc
