// The main form (dialog 102) and the job state.
#pragma once

namespace data_proc {

void write_dialog_info();     // the form shows the job state
// The job state takes the form, field by field; at the first bad field a
// message is shown, exit_code is 1 (-1 for the UB transformation) and the
// fields after it are left as they were.
void read_dialog_info();
// Keeps the form consistent after a FieldChanged message in `mensaje`.
void evento_fieldchanged();

}  // namespace data_proc
