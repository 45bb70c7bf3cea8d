// The lines about the machine and the settings that head each log.
#pragma once

#include <string>
#include <vector>

#include "base/program_paths.h"
#include "base/system_info.h"
#include "control/settings.h"

// One text a line, each with its newline. `time` is a time text, which is a line of its own.
std::vector<std::string> system_info_lines(const std::string& time, const ProgramPaths& paths,
                                           const Settings& record, const MemoryFigures& memory);

// Logs the lines of this program, here and now.
void log_system_info();
