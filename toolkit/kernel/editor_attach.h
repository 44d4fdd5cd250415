// Where the text editor, a layer above the kernel, joins the message loop and
// the windows. The program attaches it once (yyEditAttach in the editor does
// that); until then no window can become an editor.
#pragma once

struct MessageRecord;

struct EditorHooks {
  // A message for a window of kind 1, before the application sees it; the
  // editor may change it or turn it into type 0.
  void (*process_message)(int& type, MessageRecord& record) = nullptr;
  // The editor window is closing, by any way: the editor frees its record.
  void (*shutdown)(int handle) = nullptr;
  // The window has been laid out anew: the editor follows its width.
  void (*resize)(int handle) = nullptr;
};

void yyAttachEditor(const EditorHooks& hooks);
const EditorHooks& yyEditorHooks();
