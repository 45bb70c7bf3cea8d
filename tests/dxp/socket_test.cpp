// Sockets where the system has something to say in between.
#include "dxp/socket.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pthread.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "tests/dxp/scripted_peer.h"

namespace {

std::atomic<int> interruptions{0};

// While it lives, a signal of this kind breaks off what a thread waits in.
struct BreakingSignal {
    struct sigaction before {};

    BreakingSignal() {
        struct sigaction action {};
        action.sa_handler = [](int) { ++interruptions; };
        sigaction(SIGUSR1, &action, &before);
    }
    ~BreakingSignal() { sigaction(SIGUSR1, &before, nullptr); }
    BreakingSignal(const BreakingSignal&) = delete;
    BreakingSignal& operator=(const BreakingSignal&) = delete;
};

int option_of(const Socket& s, int level, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    getsockopt(static_cast<int>(s.get()), level, option, &value, &size);
    return value;
}

}  // namespace

// A peer's machine that dies is found out in a minute, not in hours, by either end.
TEST(Sockets, ASilentPeerIsAskedSoon) {
    const std::string port = std::to_string(free_port());
    const Socket listener = socket_listen(port.c_str());
    ASSERT_TRUE(listener.open());
    const Socket one = socket_connect("127.0.0.1", port.c_str(), 60000);
    ASSERT_TRUE(socket_wait_for_peer(listener, 60000));
    const Socket other = socket_accept(listener);
    for (const Socket* s : {&one, &other}) {
        ASSERT_TRUE(s->open());
        EXPECT_EQ(option_of(*s, SOL_SOCKET, SO_KEEPALIVE), 1);
        EXPECT_EQ(option_of(*s, IPPROTO_TCP, TCP_KEEPIDLE), 30);
        EXPECT_EQ(option_of(*s, IPPROTO_TCP, TCP_KEEPCNT), 3);
        EXPECT_EQ(option_of(*s, IPPROTO_TCP, TCP_KEEPINTVL), 10);
        EXPECT_EQ(option_of(*s, IPPROTO_TCP, TCP_USER_TIMEOUT), 60000)
            << "with something sent that is not answered";
    }
}

// The peer comes only after the waiting has been broken off several times.
TEST(Sockets, AWaitGoesOnBehindInterruptions) {
    const BreakingSignal signal;
    const std::string port = std::to_string(free_port());
    const Socket listener = socket_listen(port.c_str());
    ASSERT_TRUE(listener.open());
    const pthread_t waiting = pthread_self();
    Socket peer;
    interruptions = 0;
    std::jthread other([&] {
        while (interruptions < 5) {
            pthread_kill(waiting, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        peer = socket_connect("127.0.0.1", port.c_str(), 60000);
    });
    EXPECT_TRUE(socket_wait_for_peer(listener, 60000));
    other.join();
    EXPECT_TRUE(peer.open());
    EXPECT_TRUE(socket_accept(listener).open());
    EXPECT_GE(interruptions, 5);
}
