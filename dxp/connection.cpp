#include "dxp/connection.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "base/detached_thread.h"
#include "base/log.h"
#include "control/program_flags.h"

namespace {

constexpr size_t RECEIVE_BYTES = 299;
constexpr auto ROOM_WAIT = std::chrono::milliseconds(1);

DxpConnection& make_connection() {
    DxpConnection& connection = *new DxpConnection;
    connection.make_thread = [](void (*body)(std::shared_ptr<DxpLink>), std::shared_ptr<DxpLink> link) {
        return start_detached_thread([body, link = std::move(link)] { body(link); });
    };
    connection.post_event = [](int32_t, int32_t) {};
    return connection;
}

std::shared_ptr<DxpLink> current_link() {
    const std::lock_guard lock(dxp_connection.mutex);
    return dxp_connection.link;
}

// Ends the connection for the reason that it was lost. Only the first to find that out tells of it.
void lose_link(DxpLink& link) {
    if (!link.open.exchange(false)) return;
    socket_shut(link.socket);
    dxp_connection.post_event(DXP_CONNECTIONLOST, link.number);
}

// Waits for room in the ring as long as the connection lasts. What is not read meanwhile TCP holds back.
int32_t put_when_there_is_room(DxpLink& link, char byte) {
    int32_t put = dxp_ring_put(link.ring, byte);
    while (put == DXP_PUT_FULL && link.open.load(std::memory_order_acquire)) {
        std::this_thread::sleep_for(ROOM_WAIT);
        put = dxp_ring_put(link.ring, byte);
    }
    return put;
}

// Tells what a peer did that ends the connection. True if the byte was kept.
bool put_byte(DxpLink& link, char byte) {
    const int32_t put = put_when_there_is_room(link, byte);
    if (put > 0) dxp_connection.post_event(put, link.number);
    if (put >= 0) return true;
    if (put == DXP_PUT_FULL) return false;  // the connection has ended
    log_printf("DamExchange connection closed: %s\n",
               put == DXP_PUT_TOO_LONG ? "message without an end" : "message of an unknown type");
    return false;
}

void receive_all(DxpLink& link) {
    char bytes[RECEIVE_BYTES];
    for (;;) {
        const int count = socket_receive(link.socket, bytes, sizeof bytes);
        if (count <= 0) return;
        for (int i = 0; i < count; ++i) {
            // What comes in behind an end on this side is nobody's any more.
            if (!link.open.load(std::memory_order_acquire)) return;
            if (put_byte(link, bytes[i])) continue;
            socket_shut_sending(link.socket);
            return;
        }
    }
}

void receive_thread_body(std::shared_ptr<DxpLink> link) {
    link->receiving.wait();
    receive_all(*link);
    lose_link(*link);
    link.reset();
    dxp_connection.receive_threads.fetch_sub(1, std::memory_order_release);
}

// Makes the socket the program's connection and takes the state from `expected` to DXP_CONNECTED. False if
// the state is another one by now, as when the user has ended the waiting, or if there can be no thread.
// Under the lock, as `dxp_disconnect` is, which so either finds the link or prevents it.
bool install_link(Socket socket, int32_t expected) {
    DxpConnection& connection = dxp_connection;
    auto link = std::make_shared<DxpLink>();
    link->socket = std::move(socket);
    socket_limit_sending(link->socket, connection.send_ms);
    const std::lock_guard lock(connection.mutex);
    int32_t state = expected;
    if (!connection.connection_state.compare_exchange_strong(state, DXP_CONNECTED)) return false;
    connection.last_number = connection.last_number % DXP_MAX_NUMBER + 1;
    link->number = connection.last_number;
    connection.receive_threads.fetch_add(1, std::memory_order_relaxed);
    if (connection.make_thread(receive_thread_body, link)) {
        connection.link = std::move(link);
        return true;
    }
    connection.receive_threads.fetch_sub(1, std::memory_order_relaxed);
    state = DXP_CONNECTED;
    connection.connection_state.compare_exchange_strong(state, expected);
    return false;
}

// Waits once for a peer.
int take_peer() {
    Socket peer;
    {
        const Socket listener = socket_listen(dxp_connection.port_text);
        dxp_connection.port_taken.store(!listener.open(), std::memory_order_relaxed);
        if (!listener.open() || !socket_wait_for_peer(listener, DXP_LISTEN_MS)) return 1;
        peer = socket_accept(listener);
    }
    return peer.open() && install_link(std::move(peer), DXP_LISTENING) ? 0 : 1;
}

}  // namespace

DxpConnection& dxp_connection = make_connection();

bool choose_dxp_port(const char* text) {
    constexpr int HIGHEST_PORT = 65535;
    const std::string_view digits = text ? text : "";
    int port = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    const bool whole = result.ec == std::errc() && result.ptr == digits.data() + digits.size();
    if (!whole || port < 1 || port > HIGHEST_PORT) return false;
    std::snprintf(dxp_connection.port_text, sizeof dxp_connection.port_text, "%d", port);
    return true;
}

int dxp_connect(const char* hostname) {
    if (!hostname) return take_peer();
    Socket socket = socket_connect(hostname, dxp_connection.port_text, DXP_CONNECT_MS);
    return socket.open() && install_link(std::move(socket), DXP_UNCONNECTED) ? 0 : 1;
}

void dxp_begin_receiving() {
    if (const auto link = current_link()) link->receiving.signal();
}

void dxp_disconnect() {
    std::shared_ptr<DxpLink> link;
    {
        const std::lock_guard lock(dxp_connection.mutex);
        dxp_connection.connection_state.store(DXP_UNCONNECTED, std::memory_order_release);
        link.swap(dxp_connection.link);
    }
    if (program_flags.server_mode) dxp_connection.connection_event.signal();
    if (!link) return;
    link->open.store(false, std::memory_order_release);
    socket_shut(link->socket);
    link->receiving.signal();
}

int32_t dxp_connection_number() {
    const auto link = current_link();
    return link ? link->number : 0;
}

int dxp_send_message(const DxpMessage& message, char* text_out) {
    const size_t length = dxp_format_message(message, text_out);
    const auto link = current_link();
    if (length == 0 || !link || !link->open.load(std::memory_order_acquire)) return 1;
    for (size_t sent = 0; sent <= length;) {
        const int count = socket_send(link->socket, text_out + sent, length + 1 - sent);
        if (count < 1) {
            lose_link(*link);
            return 1;
        }
        sent += static_cast<size_t>(count);
    }
    return 0;
}

void dxp_get_message(DxpMessage& message_out, char* text_out) {
    message_out = DxpMessage{};
    text_out[0] = '\0';
    const auto link = current_link();
    if (!link) return;
    const size_t length = dxp_ring_take(link->ring, text_out);
    dxp_parse_message({text_out, length}, message_out);
}
