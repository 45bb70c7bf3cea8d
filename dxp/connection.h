// The one connection that the program can hold to another: how it comes about, how messages go out and come
// in, how it ends.
//
// A connection is a record of its own, a `DxpLink`, shared by the threads that use it and gone with the last
// of them: a thread of a connection that has ended can touch nothing of the next. Whoever ends it clears
// `open`, and only the one who found it set tells of it, so an end is told once at most.
//
// Three threads meet here. The interface thread sends, takes messages out, connects and disconnects; the
// connection thread (dxp/connection_thread.h) waits for a peer; the receive thread, one a connection, fills
// the ring and posts an event for every complete message.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "base/event.h"
#include "dxp/messages.h"
#include "dxp/ring.h"
#include "dxp/socket.h"

constexpr const char* DXP_PORT = "27531";
// Another port for this copy of the program; the console's --port does the same.
constexpr const char* DXP_PORT_VARIABLE = "TESSARIN_DXP_PORT";

constexpr int DXP_LISTEN_MS = 1000;    // one wait for a peer
constexpr int DXP_CONNECT_MS = 10000;  // the longest wait for a host
constexpr int DXP_SEND_MS = 10000;     // and for a peer who takes nothing of what is sent to him

enum DxpConnectionState : int32_t { DXP_UNCONNECTED = 0, DXP_LISTENING = 1, DXP_CONNECTED = 2 };

// Connections are numbered from 1 on, over and over.
constexpr int32_t DXP_MAX_NUMBER = 0x7fffff;

struct DxpLink {
    Socket socket;
    DxpRing ring;
    int32_t number = 0;            // of the connections of this run
    std::atomic<bool> open{true};  // false once it has ended, on purpose or not
    Event receiving;               // the receive thread may begin
};

struct DxpConnection {
    char port_text[8] = "27531";  // written before other threads run
    std::atomic<int32_t> connection_state{DXP_UNCONNECTED};
    Event connection_event;  // wakes the connection thread

    int send_ms = DXP_SEND_MS;  // of connections to come; tests wait less

    // Makes a thread that runs `body` and is never joined; false if the system refuses. Tests let it fail.
    bool (*make_thread)(void (*body)(std::shared_ptr<DxpLink>), std::shared_ptr<DxpLink> link);
    // The same for the connection thread; null for the usual way.
    bool (*make_connection_thread)(void (*body)()) = nullptr;
    bool connection_thread_runs = false;  // interface thread only
    // The connection thread waits for a peer, or has not yet posted what came of it.
    std::atomic<bool> waits_for_peer{false};
    // It could not listen when it last tried, as when another program has the port. It tries again and again.
    std::atomic<bool> port_taken{false};
    // The program ends: a server does not listen again. Set before the last `dxp_disconnect`.
    std::atomic<bool> closing{false};

    // Called by the receive thread for each complete message, with its type, and with DXP_CONNECTIONLOST; and
    // with that by whoever else finds the connection lost. `number` is the connection's.
    void (*post_event)(int32_t type, int32_t number);

    std::atomic<int32_t> receive_threads{0};  // that run

    std::mutex mutex;  // of `link` and `last_number`
    std::shared_ptr<DxpLink> link;
    int32_t last_number = 0;
};
// Never destroyed: its threads live as long as the process.
extern DxpConnection& dxp_connection;

// Takes the port from the text of a number from 1 to 65535, or keeps the one it has: false. Null is no
// port. Before other threads run.
bool choose_dxp_port(const char* text);

// Connects to the host while the state is DXP_UNCONNECTED, or, with null and while it is DXP_LISTENING, waits
// once for a peer. 0 with a connection, whose receive thread waits for `dxp_begin_receiving`; the state is
// then DXP_CONNECTED. 1 without. From the interface thread, and with null from the connection thread.
int dxp_connect(const char* hostname);
// Messages may come in from now on.
void dxp_begin_receiving();
// Ends the connection, or the waiting for one, without an event: the state is then DXP_UNCONNECTED, which in
// server mode wakes the connection thread. Safe when there is none. Interface thread only.
void dxp_disconnect();
// The number of the connection; 0 if there is none.
int32_t dxp_connection_number();

// Writes the message's text to DXP_TEXT_SIZE bytes and sends it, NUL included. Returns when the system has
// all of it. A connection that turns out to be lost posts DXP_CONNECTIONLOST. 0 when it was sent, 1
// otherwise. Interface thread only.
int dxp_send_message(const DxpMessage& message, char* text_out);

// Takes the oldest complete message out of the ring into a cleared record, and its text into DXP_TEXT_SIZE
// bytes. Without one the record is cleared and the text empty. Interface thread only.
void dxp_get_message(DxpMessage& message_out, char* text_out);
