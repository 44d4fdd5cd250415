// Menus: states of items of the window menus.
#pragma once

// State 1 enabled (value 1 on, 0 greyed), state 2 checked (1 checked, 0 not).
void WMenuSetState(int itemid, int state, int value);
