// Threads that nobody waits for: they end with their work or with the process.
#pragma once

#include <functional>

// False if the system has no more threads; the body does not run then. What the body touches must outlive it.
bool start_detached_thread(std::function<void()> body);
