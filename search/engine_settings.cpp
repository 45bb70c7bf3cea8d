#include "search/engine_settings.h"

EngineSettings engine_settings;
