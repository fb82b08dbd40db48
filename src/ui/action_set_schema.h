// The Types that define what the action tool bar shows: sets of actions, the widgets bound to them and their keys.
#pragma once

// Creates them in `d`. None is saved. Call once.
void CreateActionSetTypes();
