#include "control/program_flags.h"

ProgramFlags program_flags;
