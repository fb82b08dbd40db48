#pragma once

#include <QPalette>

// Of the Fusion style, the same on every machine.
QPalette LightPalette();
QPalette DarkPalette();
