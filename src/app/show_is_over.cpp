#include "app/show_is_over.h"

bool g_showIsOver = false;
