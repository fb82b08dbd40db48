#pragma once

// True from the first line of the main window's destructor: whoever reacts to focus, deletion or triggers looks here
// before it touches objects that may be gone already.
extern bool g_showIsOver;
