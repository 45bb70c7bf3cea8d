#include "tests/dxp/scripted_peer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int CONNECT_AGAIN_MS = 20;
constexpr int FIRST_PORT = 20000;
constexpr int PORTS = 12000;

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

PeerSocket stream_socket() { return PeerSocket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)); }

// A socket that waits on the port, which is filled in where it is 0; closed if that cannot be.
PeerSocket listening_socket(int& port) {
    PeerSocket s = stream_socket();
    const int on = 1;
    setsockopt(s.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address = loopback(port);
    socklen_t size = sizeof address;
    const bool there = s.open() && bind(s.get(), reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       listen(s.get(), 1) == 0 &&
                       getsockname(s.get(), reinterpret_cast<sockaddr*>(&address), &size) == 0;
    if (!there) return PeerSocket();
    port = ntohs(address.sin_port);
    return s;
}

// The name of a port, which one process at a time can have; closed if another has it.
PeerSocket port_mark(int port) {
    PeerSocket mark(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path + 1, sizeof address.sun_path - 1, "tessarin-test-port-%d", port);
    const bool ours =
        mark.open() && bind(mark.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    return ours ? std::move(mark) : PeerSocket();
}

int milliseconds_to(Clock::time_point end) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    return static_cast<int>(std::max<int64_t>(left, 0));
}

// Something can be read, or a connection taken.
bool readable(const PeerSocket& s, int wait_ms) {
    pollfd entry{s.get(), POLLIN, 0};
    return s.open() && poll(&entry, 1, wait_ms) > 0;
}

// Reads what is there. False if nothing comes in time or the connection has ended.
bool read_more(Peer& peer, int wait_ms) {
    if (peer.at_end || !readable(peer.socket, wait_ms)) return false;
    char bytes[4096];
    const ssize_t count = recv(peer.socket.get(), bytes, sizeof bytes, 0);
    if (count <= 0) {
        peer.at_end = true;
        return false;
    }
    peer.unread.append(bytes, static_cast<size_t>(count));
    return true;
}

void complain(Peer& peer, const std::string& text) {
    if (peer.well()) peer.complaint = text;
}

void sleep_ms(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// What a name is on the wire.
std::string name_field(std::string_view name) {
    std::string field(name.substr(0, 32));
    field.resize(32, ' ');
    return field;
}

std::string two_digits(int number) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d", number);
    return text;
}

}  // namespace

void PeerSocket::close() {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

// Outside the range from which the system takes ports for those who connect or don't care.
int free_port() {
    for (int i = 0; i < PORTS; ++i) {
        const int port = FIRST_PORT + (static_cast<int>(getpid()) + i) % PORTS;
        PeerSocket mark = port_mark(port);
        int listened = port;
        if (!mark.open() || !listening_socket(listened).open()) continue;
        static std::vector<PeerSocket> marks;
        marks.push_back(std::move(mark));
        return port;
    }
    return 0;
}

int peer_listen(Peer& peer, int port) {
    peer.listener = listening_socket(port);
    return peer.listener.open() ? port : 0;
}

bool peer_accept(Peer& peer, int wait_ms) {
    if (!readable(peer.listener, wait_ms)) return false;
    peer.socket = PeerSocket(accept4(peer.listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    peer.listener.close();
    peer.unread.clear();
    peer.at_end = false;
    return peer.socket.open();
}

bool peer_connect(Peer& peer, int port, int wait_ms) {
    const auto end = Clock::now() + std::chrono::milliseconds(wait_ms);
    peer.unread.clear();
    peer.at_end = false;
    for (;;) {
        peer.socket = stream_socket();
        sockaddr_in address = loopback(port);
        if (connect(peer.socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
            return true;
        peer.socket.close();
        if (milliseconds_to(end) == 0) return false;
        sleep_ms(CONNECT_AGAIN_MS);
    }
}

bool peer_send_bytes(Peer& peer, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(peer.socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 1) return false;
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

bool peer_send(Peer& peer, std::string_view text) { return peer_send_joined(peer, {std::string(text)}); }

bool peer_send_joined(Peer& peer, const std::vector<std::string>& texts) {
    std::string bytes;
    for (const std::string& text : texts) {
        bytes += text;
        bytes += '\0';
    }
    return peer_send_bytes(peer, bytes);
}

bool peer_send_in_pieces(Peer& peer, std::string_view bytes, size_t piece, int pause_ms) {
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
        if (!peer_send_bytes(peer, bytes.substr(0, piece))) return false;
        sleep_ms(pause_ms);
    }
    return true;
}

bool peer_receive(Peer& peer, std::string& text, int wait_ms) {
    const auto end = Clock::now() + std::chrono::milliseconds(wait_ms);
    for (;;) {
        if (const size_t nul = peer.unread.find('\0'); nul != std::string::npos) {
            text = peer.unread.substr(0, nul);
            peer.unread.erase(0, nul + 1);
            peer.heard.push_back(text);
            return true;
        }
        if (!read_more(peer, milliseconds_to(end))) return false;
    }
}

bool peer_sees_end(Peer& peer, int wait_ms) {
    const auto end = Clock::now() + std::chrono::milliseconds(wait_ms);
    std::string text;
    while (peer_receive(peer, text, milliseconds_to(end))) {
    }
    return peer.at_end;
}

void peer_half_close(Peer& peer) { shutdown(peer.socket.get(), SHUT_WR); }

void peer_reset(Peer& peer) {
    // Closing without a moment for what is still to be sent sends a reset.
    const linger at_once{1, 0};
    setsockopt(peer.socket.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    peer.socket.close();
}

void peer_close(Peer& peer) { peer.socket.close(); }

PeerStep accepts(int wait_ms) {
    return [=](Peer& peer) {
        if (!peer_accept(peer, wait_ms)) complain(peer, "the program has not connected");
    };
}

PeerStep connects_to(int port, int wait_ms) {
    return [=](Peer& peer) {
        if (!peer_connect(peer, port, wait_ms)) complain(peer, "the program does not listen");
    };
}

PeerStep sends(std::string text) { return sends_joined({std::move(text)}); }

PeerStep sends_bytes(std::string bytes) {
    return [bytes = std::move(bytes)](Peer& peer) {
        if (!peer_send_bytes(peer, bytes)) complain(peer, "could not send " + bytes);
    };
}

PeerStep sends_joined(std::vector<std::string> texts) {
    return [texts = std::move(texts)](Peer& peer) {
        if (!peer_send_joined(peer, texts)) complain(peer, "could not send " + texts.front());
    };
}

PeerStep sends_in_pieces(std::string bytes, size_t piece, int pause_ms) {
    return [bytes = std::move(bytes), piece, pause_ms](Peer& peer) {
        if (!peer_send_in_pieces(peer, bytes, piece, pause_ms)) complain(peer, "could not send " + bytes);
    };
}

PeerStep hears(std::string pattern, int wait_ms) {
    return [pattern = std::move(pattern), wait_ms](Peer& peer) {
        std::string text;
        if (!peer_receive(peer, text, wait_ms))
            complain(peer, "heard nothing instead of " + pattern);
        else if (!fits_pattern(text, pattern))
            complain(peer, "heard " + text + " instead of " + pattern);
    };
}

PeerStep waits_to_hear(std::string pattern, int wait_ms) {
    return [pattern = std::move(pattern), wait_ms](Peer& peer) {
        const auto end = Clock::now() + std::chrono::milliseconds(wait_ms);
        std::string text;
        do {
            if (peer_receive(peer, text, milliseconds_to(end))) continue;
            return complain(peer, "never heard " + pattern);
        } while (!fits_pattern(text, pattern));
    };
}

PeerStep hears_nothing(int for_ms) {
    return [=](Peer& peer) {
        std::string text;
        if (peer_receive(peer, text, for_ms)) complain(peer, "heard " + text + " instead of nothing");
    };
}

PeerStep stays_silent(int for_ms) {
    return [=](Peer&) { sleep_ms(for_ms); };
}

PeerStep sees_end(int wait_ms) {
    return [=](Peer& peer) {
        if (!peer_sees_end(peer, wait_ms)) complain(peer, "the program has not closed the connection");
    };
}

PeerStep half_closes() { return peer_half_close; }
PeerStep resets() { return peer_reset; }
PeerStep closes() { return peer_close; }

std::string run_script(Peer& peer, const PeerScript& script) {
    for (const PeerStep& step : script) {
        step(peer);
        if (!peer.well()) break;
    }
    return peer.complaint;
}

bool fits_pattern(std::string_view text, std::string_view pattern) {
    if (pattern.ends_with('*')) {
        pattern.remove_suffix(1);
        text = text.substr(0, pattern.size());
    }
    return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(),
                      [](char c, char wanted) { return wanted == '?' || c == wanted; });
}

std::jthread run_in_background(Peer& peer, PeerScript script) {
    return std::jthread([&peer, script = std::move(script)] { run_script(peer, script); });
}

std::string game_request_text(std::string_view name, char colour, std::string_view time,
                              std::string_view moves, std::string_view position) {
    return "R01" + name_field(name) + colour + std::string(time) + std::string(moves) + std::string(position);
}

std::string fischer_request_text(std::string_view name, char colour, std::string_view initial,
                                 std::string_view increment, std::string_view position) {
    return "F01" + name_field(name) + colour + std::string(initial) + std::string(increment) +
           std::string(position);
}

std::string game_acceptance_text(std::string_view name, char code) { return "A" + name_field(name) + code; }

std::string move_message_text(int from, int to, const std::vector<int>& jumped) {
    std::string text =
        "M0000" + two_digits(from) + two_digits(to) + two_digits(static_cast<int>(jumped.size()));
    for (const int square : jumped) text += two_digits(square);
    return text;
}
