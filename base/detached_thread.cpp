#include "base/detached_thread.h"

#include <system_error>
#include <thread>
#include <utility>

bool start_detached_thread(std::function<void()> body) {
    try {
        std::thread(std::move(body)).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}
