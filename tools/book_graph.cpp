#include "tools/book_graph.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <queue>
#include <span>

#include "core/movegen.h"

namespace {

constexpr int32_t UNREACHED = std::numeric_limits<int32_t>::max();

BookKey key_of(const Position& position) {
    return {position.black, position.white, position.king << 1 | static_cast<uint64_t>(position.side)};
}

// From the view of the side to move.
int32_t for_mover(const BookNode& node, int32_t value) { return node.side == BLACK ? value : -value; }

// No move adds to it, and all but quiet moves of kings take from it.
int32_t remaining_moves(const BookNode& node) {
    constexpr int32_t PIECE = 1000;  // more than all men can go back in one capture
    int32_t rows = 0;
    for (size_t i = 0; i < SQUARES; ++i) {
        const uint64_t man = mask_of_square[i] & ~node.king;
        const auto row = static_cast<int32_t>(i / 5);
        if (node.black & man) rows += 9 - row;
        if (node.white & man) rows += row;
    }
    return bit_count(node.black | node.white) * PIECE + rows;
}

const BookEdge& edge_of(const BookNode& node, int32_t index) {
    return node.edges[static_cast<size_t>(index)];
}

const BookNode& child_of(const BookGraph& graph, const BookEdge& edge) {
    return graph.nodes[static_cast<size_t>(edge.child)];
}

// The move has a value of its own to compare: that of its child, or of the node's search.
bool move_value(const BookGraph& graph, const BookNode& node, int32_t index, int32_t& value) {
    const BookNode& child = child_of(graph, edge_of(node, index));
    value = child.analysed ? child.value : node.search_value;
    return child.analysed || index == node.search_best;
}

// The best move and its value.
int32_t best_of(const BookGraph& graph, const BookNode& node, int32_t& best_value) {
    int32_t best = -1;
    for (int32_t i = 0; i < static_cast<int32_t>(node.edges.size()); ++i) {
        int32_t value = 0;
        if (!move_value(graph, node, i, value)) continue;
        if (best >= 0 && for_mover(node, value) <= for_mover(node, best_value)) continue;
        best = i;
        best_value = value;
    }
    return best;
}

// True if the value changed. The move is kept with the value that it was first seen to reach, so that a line
// of best moves that is worth more than a draw gets on.
bool update_node(const BookGraph& graph, BookNode& node) {
    int32_t value = 0;
    const int32_t best = best_of(graph, node, value);
    if (node.best >= 0 && value == node.value) return false;
    const bool changed = value != node.value;
    node.value = static_cast<int16_t>(value);
    node.best = static_cast<int16_t>(best);
    return changed;
}

// Of moves whose child has changed since.
void refresh_move(const BookGraph& graph, BookNode& node) {
    int32_t value = 0;
    if (move_value(graph, node, node.best, value) && value == node.value) return;
    node.best = static_cast<int16_t>(best_of(graph, node, value));
}

// The move's value for the mover; of a move without an analysis, what the short searches make of it.
int32_t likely_value(const BookGraph& graph, const BookNode& node, int32_t index) {
    const BookNode& child = child_of(graph, edge_of(node, index));
    if (child.analysed) return for_mover(node, child.value);
    const int32_t quick_best = for_mover(node, edge_of(node, node.search_best).quick);
    const int32_t behind = quick_best - for_mover(node, edge_of(node, index).quick);
    return for_mover(node, node.search_value) - std::max(0, behind);
}

int32_t loss_of(const BookGraph& graph, const BookNode& node, int32_t index) {
    return std::max(0, for_mover(node, node.value) - likely_value(graph, node, index));
}

bool can_be_analysed(const BookNode& node) { return !node.analysed && node.has_moves && node.black != 0; }

// Shortest ways from the roots for a book that plays `colour`.
void work_out_costs(BookGraph& graph, int colour) {
    const auto side = static_cast<size_t>(colour);
    for (BookNode& node : graph.nodes) node.cost[side] = UNREACHED;
    using Step = std::pair<int32_t, int32_t>;  // cost, node
    std::priority_queue<Step, std::vector<Step>, std::greater<>> steps;
    const auto reach = [&](int32_t number, int32_t cost) {
        BookNode& node = graph.nodes[static_cast<size_t>(number)];
        if (cost >= node.cost[side]) return;
        node.cost[side] = cost;
        if (node.analysed) steps.emplace(cost, number);
    };
    for (const BookGraph::Root& root : graph.roots) reach(root.node, root.cost);
    while (!steps.empty()) {
        const auto [cost, number] = steps.top();
        steps.pop();
        const BookNode& node = graph.nodes[static_cast<size_t>(number)];
        if (cost > node.cost[side] || std::abs(node.value) >= graph.costs.decided) continue;
        const int32_t weight = node.side == colour ? graph.costs.own_loss : graph.costs.other_loss;
        for (int32_t i = 0; i < static_cast<int32_t>(node.edges.size()); ++i)
            reach(edge_of(node, i).child, cost + graph.costs.ply + weight * loss_of(graph, node, i));
    }
}

}  // namespace

size_t BookKeyHash::operator()(const BookKey& key) const {
    uint64_t state = 0;
    for (const uint64_t word : {key.black, key.white, key.king_and_side}) {
        state = (state ^ word) * 0x9e3779b97f4a7c15;
        state ^= state >> 29;
    }
    return static_cast<size_t>(state);
}

Position position_of_node(const BookNode& node) {
    return {node.black, node.white, node.king, node.side, 0, nullptr};
}

int32_t book_node(BookGraph& graph, const Position& position) {
    const auto number = static_cast<int32_t>(graph.nodes.size());
    const auto [place, is_new] = graph.numbers.try_emplace(key_of(position), number);
    if (!is_new) return place->second;
    BookNode& node = graph.nodes.emplace_back();
    node.black = position.black;
    node.white = position.white;
    node.king = position.king;
    node.side = static_cast<int8_t>(position.side);
    MoveList list;
    node.has_moves = generate_moves(position, list, position.side) > 0;
    return number;
}

void add_book_root(BookGraph& graph, const Position& position, int32_t cost) {
    graph.roots.push_back({book_node(graph, position), cost});
}

void add_book_analysis(BookGraph& graph, int32_t number, const BookAnalysis& analysis) {
    BookNode node = graph.nodes[static_cast<size_t>(number)];
    if (!node.has_moves || analysis.nodes < node.searched) return;
    node.searched = analysis.nodes;
    node.search_value = static_cast<int16_t>(analysis.value);
    node.search_best = static_cast<int16_t>(analysis.best);
    graph.searched_nodes += analysis.nodes;
    if (node.analysed) {
        graph.nodes[static_cast<size_t>(number)] = std::move(node);
        return;
    }
    node.analysed = true;
    const Position position = position_of_node(node);
    MoveList list;
    generate_moves(position, list, position.side);
    for (int i = 0; i < list.count; ++i) {
        const int32_t child = book_node(graph, position_after(list[i], position.side ^ 1));
        node.edges.push_back({child, analysis.quick[static_cast<size_t>(i)]});
    }
    graph.nodes[static_cast<size_t>(number)] = std::move(node);
    graph.analysed.push_back(number);
}

// Everything begins as a draw and changes until nothing does. Children come first in the order, so that one
// pass is enough but where kings go to and fro.
void carry_back_values(BookGraph& graph) {
    std::vector<std::pair<int32_t, int32_t>> order;  // remaining moves, node
    order.reserve(graph.analysed.size());
    for (const int32_t number : graph.analysed) {
        BookNode& node = graph.nodes[static_cast<size_t>(number)];
        node.value = 0;
        node.best = -1;
        order.emplace_back(remaining_moves(node), number);
    }
    std::sort(order.begin(), order.end());
    for (bool changed = true; changed;) {
        changed = false;
        for (const auto& [moves, number] : order)
            changed |= update_node(graph, graph.nodes[static_cast<size_t>(number)]);
    }
    for (const auto& [moves, number] : order) refresh_move(graph, graph.nodes[static_cast<size_t>(number)]);
}

std::vector<int32_t> nodes_to_analyse(BookGraph& graph, size_t count) {
    for (const int colour : {BLACK, WHITE}) work_out_costs(graph, colour);
    std::vector<std::pair<int32_t, int32_t>> open;  // cost, node
    for (size_t i = 0; i < graph.nodes.size(); ++i) {
        const BookNode& node = graph.nodes[i];
        const int32_t cost = std::min(node.cost[BLACK], node.cost[WHITE]);
        if (can_be_analysed(node) && cost < UNREACHED) open.emplace_back(cost, static_cast<int32_t>(i));
    }
    const auto wanted = static_cast<std::ptrdiff_t>(std::min(count, open.size()));
    std::partial_sort(open.begin(), open.begin() + wanted, open.end());
    std::vector<int32_t> chosen;
    for (const auto& [cost, number] : std::span(open).first(static_cast<size_t>(wanted)))
        chosen.push_back(number);
    return chosen;
}

int32_t promising_move(const BookGraph& graph, const BookNode& node, int32_t margin) {
    int32_t promising = -1, most = for_mover(node, node.value) - margin;
    for (int32_t i = 0; i < static_cast<int32_t>(node.edges.size()); ++i) {
        const int32_t value = likely_value(graph, node, i);
        if (i == node.best || value <= most || !can_be_analysed(child_of(graph, edge_of(node, i)))) continue;
        promising = i;
        most = value;
    }
    return promising;
}

int32_t second_best_move(const BookGraph& graph, const BookNode& node, int32_t margin) {
    int32_t second = -1, second_value = 0;
    for (int32_t i = 0; i < static_cast<int32_t>(node.edges.size()); ++i) {
        const BookNode& child = child_of(graph, edge_of(node, i));
        if (i == node.best || !child.analysed) continue;
        if (second >= 0 && for_mover(node, child.value) <= for_mover(node, second_value)) continue;
        second = i;
        second_value = child.value;
    }
    const bool near = for_mover(node, node.value) - for_mover(node, second_value) <= margin;
    return near ? second : -1;
}
