// The settings, the clock, the engine's copies and the table as a new process has them, before and after each
// test.
#pragma once

#include <gtest/gtest.h>

#include "base/text.h"
#include "control/database_settings.h"
#include "control/game_clock.h"
#include "control/settings.h"
#include "search/engine_settings.h"
#include "search/table.h"

class SettingsTest : public testing::Test {
  protected:
    void SetUp() override { clean(); }
    void TearDown() override { clean(); }

    static void clean() {
        settings = Settings{};
        settings2 = Settings2{};
        engine_settings = EngineSettings{};
        transposition_table = TranspositionTable{};
        reinit_wld = false;
        reinit_mtc = false;
        text_source = nullptr;
        reset_clock_state();
    }
};
