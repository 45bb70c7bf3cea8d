// A player at the other end of the wire, made of raw bytes on a loopback socket: it knows nothing of the code
// that it is there to test. It does what a script says, step by step, and notes the first thing that did not
// go as the script has it.
//
// A peer is used by one thread at a time; `run_in_background` gives it one of its own, while the test's
// thread is the interface thread of the program. A text is the message without the NUL behind it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

// A descriptor that closes itself.
class PeerSocket {
  public:
    PeerSocket() = default;
    explicit PeerSocket(int descriptor) : fd(descriptor) {}
    ~PeerSocket() { close(); }
    PeerSocket(PeerSocket&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    PeerSocket& operator=(PeerSocket&& other) noexcept {
        std::swap(fd, other.fd);
        return *this;
    }
    PeerSocket(const PeerSocket&) = delete;
    PeerSocket& operator=(const PeerSocket&) = delete;

    int get() const { return fd; }
    bool open() const { return fd >= 0; }
    void close();

  private:
    int fd = -1;
};

struct Peer {
    PeerSocket listener;  // while it waits for the program to connect
    PeerSocket socket;
    std::string unread;              // bytes that came behind the last message taken
    std::vector<std::string> heard;  // every message taken, in order
    bool at_end = false;             // the program has closed the connection, or it was lost

    std::string complaint;  // empty while all goes as told

    bool well() const { return complaint.empty(); }
};

// How long a step waits for the program; generous, as machines are busy.
constexpr int PEER_WAIT_MS = 60000;

// A port on which nobody listens. No other test has it while this process lives; 0 if there is none.
int free_port();

// Waits on the port for the program: `peer_accept` takes the connection. With port 0 the system chooses one.
// Returns the port; 0 if there is none to be had.
int peer_listen(Peer& peer, int port = 0);
bool peer_accept(Peer& peer, int wait_ms = PEER_WAIT_MS);
// Connects, again and again until the program listens.
bool peer_connect(Peer& peer, int port, int wait_ms = PEER_WAIT_MS);

// Bytes as they are. False if they could not be sent.
bool peer_send_bytes(Peer& peer, std::string_view bytes);
// A message, or several, each with its NUL.
bool peer_send(Peer& peer, std::string_view text);
bool peer_send_joined(Peer& peer, const std::vector<std::string>& texts);
// The bytes in pieces of so many, with a pause between them.
bool peer_send_in_pieces(Peer& peer, std::string_view bytes, size_t piece, int pause_ms);

// The next message of the program. False if none comes in time or the connection has ended.
bool peer_receive(Peer& peer, std::string& text, int wait_ms = PEER_WAIT_MS);
// True if the program closes the connection in time; what it sent before is noted and dropped.
bool peer_sees_end(Peer& peer, int wait_ms = PEER_WAIT_MS);

void peer_half_close(Peer& peer);  // no more is sent; what comes can still be read
void peer_reset(Peer& peer);       // breaks the connection off, as when a machine fails
void peer_close(Peer& peer);       // orderly

// A step of a script. The peer is not run further once it has a complaint.
using PeerStep = std::function<void(Peer& peer)>;
using PeerScript = std::vector<PeerStep>;

PeerStep accepts(int wait_ms = PEER_WAIT_MS);
PeerStep connects_to(int port, int wait_ms = PEER_WAIT_MS);
PeerStep sends(std::string text);
PeerStep sends_bytes(std::string bytes);
PeerStep sends_joined(std::vector<std::string> texts);
PeerStep sends_in_pieces(std::string bytes, size_t piece, int pause_ms);
// The next message fits the pattern, in which "?" stands for any character and "*" at its end for any rest.
PeerStep hears(std::string pattern, int wait_ms = PEER_WAIT_MS);
// Messages are skipped until one fits.
PeerStep waits_to_hear(std::string pattern, int wait_ms = PEER_WAIT_MS);
PeerStep hears_nothing(int for_ms);
PeerStep stays_silent(int for_ms);
PeerStep sees_end(int wait_ms = PEER_WAIT_MS);
PeerStep half_closes();
PeerStep resets();
PeerStep closes();

// Runs the steps until one goes wrong. Returns the complaint, empty if there is none.
std::string run_script(Peer& peer, const PeerScript& script);

bool fits_pattern(std::string_view text, std::string_view pattern);

// A thread that runs a peer and is joined when it goes.
std::jthread run_in_background(Peer& peer, PeerScript script);

// Texts of messages, written as the format is told, not by the program's code.

// `colour` is what the follower is to play, "W" or "Z"; `time` and `moves` stand as they are given, three
// characters each; the position is "A", or "B" with the side and the fifty squares.
std::string game_request_text(std::string_view name, char colour, std::string_view time,
                              std::string_view moves, std::string_view position = "A");
// With initial time and increment of six characters each.
std::string fischer_request_text(std::string_view name, char colour, std::string_view initial,
                                 std::string_view increment, std::string_view position = "A");
std::string game_acceptance_text(std::string_view name, char code = '0');
std::string move_message_text(int from, int to, const std::vector<int>& jumped = {});

constexpr std::string_view INITIAL_SQUARES = "zzzzzzzzzzzzzzzzzzzzeeeeeeeeeewwwwwwwwwwwwwwwwwwww";
