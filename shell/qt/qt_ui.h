// The windows as game control knows them: fills in the record of control/ui.h.
#pragma once

#include "control/ui.h"

// The functions for the main window that is there; without one they show nothing.
Ui make_qt_ui();
