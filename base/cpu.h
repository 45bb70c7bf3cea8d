// Processor features, read once, before the program starts its work. They are constant from then on, so any
// thread may read them; only tests change them, to compare the paths with one another.
#pragma once

// The population count instruction is there.
extern bool have_popcnt;

// The parallel bit extract instruction is there and fast: BMI2 on a "GenuineIntel" processor. Others have
// had slow versions of it, so they take the path of shifts and masks.
extern bool use_pext;

// The parallel bit extract instruction is there, fast or not. For tests of that path.
bool have_bmi2();
