#include "cli/message_loop.h"

#include <deque>
#include <mutex>

#include "base/manual_event.h"
#include "cli/game_console.h"

namespace {

struct Work {
    void (*work)(int32_t argument);
    int32_t argument;
};

struct PostedWork {
    std::mutex mutex;
    std::deque<Work> waiting;
    ManualEvent woken;
};

// Never destroyed: threads that nobody joins post to it for as long as the process lives.
PostedWork& posted = *new PostedWork;

bool take_work(Work& work) {
    const std::lock_guard lock(posted.mutex);
    if (posted.waiting.empty()) return false;
    work = posted.waiting.front();
    posted.waiting.pop_front();
    return true;
}

}  // namespace

void post_console_work(void (*work)(int32_t argument), int32_t argument) {
    {
        const std::lock_guard lock(posted.mutex);
        posted.waiting.push_back({work, argument});
    }
    posted.woken.signal();
}

void wake_console_loop() { posted.woken.signal(); }

void turn_console_loop() {
    // What is posted or ends from here on wakes the sleep below.
    posted.woken.reset();
    const int wait = tick_if_due();
    Work work{};
    if (take_work(work)) return work.work(work.argument);
    posted.woken.wait_for(wait);
}
