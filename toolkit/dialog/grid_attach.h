// Where the grid, a layer above the dialog engine, joins it. The program
// attaches it once before the first window opens (yyGridAttach in the grid
// does that); until then a grid field is an empty frame.
#pragma once

struct DialogRecord;
struct FieldRecord;

struct GridFieldHooks {
  // Builds the widgets of a grid field: f.widget the outer one, like any
  // other type's creation routine.
  void (*create)(DialogRecord& d, FieldRecord& f) = nullptr;
  // The field's state (0 disabled, 1 enabled, 2 read-only) in its cells' colours.
  void (*colour)(FieldRecord& f, int state) = nullptr;
  // The keyboard to the field's current cell (the first when there is none).
  void (*focus)(FieldRecord& f) = nullptr;
};

void yyAttachGridField(const GridFieldHooks& hooks);
