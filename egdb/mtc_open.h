// Opens a database of moves to conversion.
#pragma once

#include "egdb/start_up.h"

// As `open_database` does. No file is held whole.
OpenEgdb open_mtc(const EgdbOpenRequest& request);
