// Opens a database of values.
#pragma once

#include "egdb/start_up.h"

// As `open_database` does.
OpenEgdb open_wld(const EgdbOpenRequest& request);

// What is behind a driver that `open_wld` made.
const EgdbDatabase& wld_database(const EgdbDriver& driver);
