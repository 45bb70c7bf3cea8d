// File calls that go wrong at a chosen moment. The calls are numbered as they come; what happens at one of
// them is the fault.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum class Fault {
    NONE,
    FAIL,          // the call does nothing and reports an error
    SHORT_WRITE,   // a write takes a part, the next one fails
    CRASH_BEFORE,  // the process ends
    CRASH_AFTER,   // the process ends when the call is done
    CRASH_MIDWAY,  // the process ends when a write has taken a part
};

constexpr int CRASH_STATUS = 86;

struct FaultPlan {
    Fault fault = Fault::NONE;
    int at_call = -1;
    int calls = 0;                   // so far
    std::vector<std::string> trace;  // "open", "write", "flush", "close", "rename", "remove", "read", "seek"
};
extern FaultPlan fault_plan;

// While it lives, `file_calls` follows `fault_plan`, which starts anew.
class FaultyFiles {
  public:
    FaultyFiles(Fault fault, int at_call);
    ~FaultyFiles();
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;
};
