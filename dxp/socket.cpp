#include "dxp/socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <utility>

namespace {

struct FreeAddresses {
    void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

int descriptor(const Socket& socket) { return static_cast<int>(socket.get()); }

// Of IPv4 and TCP; the machine's own for a null host. Null if there is none.
Addresses resolve(const char* host, const char* port) {
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_protocol = IPPROTO_TCP;
    if (!host) wanted.ai_flags = AI_PASSIVE;
    addrinfo* found = nullptr;
    return Addresses(getaddrinfo(host, port, &wanted, &found) == 0 ? found : nullptr);
}

Socket make_socket(const addrinfo& address) {
    return Socket(socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC, address.ai_protocol));
}

void set_option(const Socket& s, int level, int option, int value = 1) {
    setsockopt(descriptor(s), level, option, &value, sizeof value);
}

// Messages are short and wait for no others. A machine that is gone while this side waits for it is found out
// within a minute: behind so many seconds of silence it is asked, so often, each time so many seconds long;
// and what was sent is not repeated for longer than all of that.
void set_up_connection(const Socket& s) {
    constexpr int SILENCE = 30;
    constexpr int QUESTIONS = 3;
    constexpr int QUESTION_LASTS = 10;
    set_option(s, IPPROTO_TCP, TCP_NODELAY);
    set_option(s, IPPROTO_TCP, TCP_KEEPIDLE, SILENCE);
    set_option(s, IPPROTO_TCP, TCP_KEEPCNT, QUESTIONS);
    set_option(s, IPPROTO_TCP, TCP_KEEPINTVL, QUESTION_LASTS);
    set_option(s, SOL_SOCKET, SO_KEEPALIVE);
    set_option(s, IPPROTO_TCP, TCP_USER_TIMEOUT, 1000 * (SILENCE + QUESTIONS * QUESTION_LASTS));
}

// Polls for the events, through interruptions. True if there was one within the time.
bool wait_for(const Socket& s, short events, int wait_ms) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(wait_ms);
    for (;;) {
        pollfd entry{descriptor(s), events, 0};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        const int ready = poll(&entry, 1, left > 0 ? static_cast<int>(left) : 0);
        if (ready >= 0 || errno != EINTR) return ready > 0;
    }
}

void set_blocking(const Socket& s, bool blocking) {
    const int flags = fcntl(descriptor(s), F_GETFL);
    fcntl(descriptor(s), F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
}

// Connects within the time.
bool connect_in_time(const Socket& s, const addrinfo& address, int wait_ms) {
    set_blocking(s, false);
    if (connect(descriptor(s), address.ai_addr, address.ai_addrlen) != 0) {
        if (errno != EINPROGRESS && errno != EINTR) return false;
        int error = 0;
        socklen_t size = sizeof error;
        if (!wait_for(s, POLLOUT, wait_ms) ||
            getsockopt(descriptor(s), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0)
            return false;
    }
    set_blocking(s, true);
    return true;
}

}  // namespace

Socket::Socket(Socket&& other) noexcept : handle(std::exchange(other.handle, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    if (this != &other) {
        close();
        handle = std::exchange(other.handle, -1);
    }
    return *this;
}

void Socket::close() {
    if (open()) ::close(static_cast<int>(handle));
    handle = -1;
}

Socket socket_connect(const char* host, const char* port, int wait_ms) {
    const Addresses address = resolve(host, port);
    if (!address) return Socket();
    Socket s = make_socket(*address);
    if (!s.open() || !connect_in_time(s, *address, wait_ms)) return Socket();
    set_up_connection(s);
    return s;
}

Socket socket_listen(const char* port) {
    const Addresses address = resolve(nullptr, port);
    if (!address) return Socket();
    Socket s = make_socket(*address);
    // The port may still be remembered from a connection that has just ended.
    if (s.open()) set_option(s, SOL_SOCKET, SO_REUSEADDR);
    const bool listens = s.open() && bind(descriptor(s), address->ai_addr, address->ai_addrlen) == 0 &&
                         listen(descriptor(s), SOMAXCONN) == 0;
    return listens ? std::move(s) : Socket();
}

bool socket_wait_for_peer(const Socket& listener, int wait_ms) { return wait_for(listener, POLLIN, wait_ms); }

Socket socket_accept(const Socket& listener) {
    // The peer may have gone since he was seen, and there is no waiting for another.
    set_blocking(listener, false);
    Socket s(accept4(descriptor(listener), nullptr, nullptr, SOCK_CLOEXEC));
    if (s.open()) set_up_connection(s);
    return s;
}

int socket_receive(const Socket& socket, char* bytes, size_t size) {
    for (;;) {
        const ssize_t count = recv(descriptor(socket), bytes, size, 0);
        if (count >= 0 || errno != EINTR) return static_cast<int>(count);
    }
}

void socket_limit_sending(const Socket& socket, int wait_ms) {
    timeval limit{};
    limit.tv_sec = wait_ms / 1000;
    limit.tv_usec = wait_ms % 1000 * 1000L;
    setsockopt(descriptor(socket), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

int socket_send(const Socket& socket, const char* bytes, size_t size) {
    for (;;) {
        const ssize_t count = send(descriptor(socket), bytes, size, MSG_NOSIGNAL);
        if (count >= 0 || errno != EINTR) return static_cast<int>(count);
    }
}

void socket_shut_sending(const Socket& socket) { shutdown(descriptor(socket), SHUT_WR); }

void socket_shut(const Socket& socket) { shutdown(descriptor(socket), SHUT_RDWR); }
