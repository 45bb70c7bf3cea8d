// TCP as the system has it, and the only place of the network play that calls the system: another system is
// another file beside socket.cpp. Functions of one socket may be called by several threads at once. No
// function raises a signal or throws; what goes wrong is told by the result alone.
#pragma once

#include <cstddef>
#include <cstdint>

// A socket that closes itself.
class Socket {
  public:
    Socket() = default;
    explicit Socket(intptr_t opened) : handle(opened) {}
    ~Socket() { close(); }
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool open() const { return handle >= 0; }
    intptr_t get() const { return handle; }
    void close();

  private:
    intptr_t handle = -1;
};

// Resolves the host, for IPv4, and connects within the time. Not open if that fails.
Socket socket_connect(const char* host, const char* port, int wait_ms);

// Waits for peers on all addresses of the machine. Not open if the port is taken.
Socket socket_listen(const char* port);
// True if a peer is there within the time.
bool socket_wait_for_peer(const Socket& listener, int wait_ms);
// The peer that waits. Not open if he has gone.
Socket socket_accept(const Socket& listener);

// Waits for bytes and takes up to `size` of them. 0 when the other side sends no more, negative on a failure.
int socket_receive(const Socket& socket, char* bytes, size_t size);
// From now on it is a failure when the other side takes nothing for so long. Without it sending has no limit.
void socket_limit_sending(const Socket& socket, int wait_ms);
// Hands over up to `size` bytes; the number handed over. Below 1 on a failure.
int socket_send(const Socket& socket, const char* bytes, size_t size);

// The other side is told that no more comes.
void socket_shut_sending(const Socket& socket);
// The same, and a thread that waits in `socket_receive` comes back.
void socket_shut(const Socket& socket);
