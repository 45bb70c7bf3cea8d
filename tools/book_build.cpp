#include "tools/book_build.h"

#include <algorithm>

#include "core/ballots.h"

namespace {

constexpr int BALLOT_MOVES = 2;

void add_roots(BookGraph& graph, const BookBuildOptions& options) {
    add_book_root(graph, START_POSITION, 0);
    Ballot ballot{};
    for (int i = 0; find_ballot(BALLOT_MOVES, i, ballot); ++i)
        add_book_root(graph, ballot.position, options.ballot_cost);
}

int64_t analysed_count(const BookGraph& graph) { return static_cast<int64_t>(graph.analysed.size()); }

}  // namespace

bool grow_book(BookGraph& graph, const BookBuildOptions& options, const BookAnalyst& analyst) {
    graph = BookGraph{};
    graph.costs = options.costs;
    add_roots(graph, options);
    std::vector<BookTask> tasks;
    std::vector<BookAnalysis> analyses;
    while (analysed_count(graph) < options.positions) {
        const int64_t batch = std::max(BOOK_LEAST_BATCH, analysed_count(graph) / BOOK_BATCH_SHARE);
        std::vector<int32_t> nodes = nodes_to_analyse(graph, static_cast<size_t>(batch));
        if (nodes.empty()) return true;
        const auto wanted = static_cast<size_t>(options.positions - analysed_count(graph));
        if (nodes.size() > wanted) nodes.resize(wanted);
        tasks.clear();
        for (const int32_t node : nodes) {
            const auto place = analysed_count(graph) + static_cast<int64_t>(tasks.size());
            tasks.push_back({position_of_node(graph.nodes[static_cast<size_t>(node)]),
                             place < options.deep_positions ? options.deep_nodes : options.nodes});
        }
        if (!analyst.analyse(analyst.context, tasks, analyses)) return false;
        for (size_t i = 0; i < nodes.size(); ++i) add_book_analysis(graph, nodes[i], analyses[i]);
        carry_back_values(graph);
    }
    return true;
}

std::vector<BookPosition> book_positions(const BookGraph& graph, int32_t second_margin) {
    std::vector<BookPosition> positions;
    positions.reserve(graph.analysed.size());
    for (const int32_t number : graph.analysed) {
        const BookNode& node = graph.nodes[static_cast<size_t>(number)];
        const int32_t second = second_best_move(graph, node, second_margin);
        positions.push_back(
            {position_of_node(node), node.best, second < 0 ? NO_BOOK_MOVE : second, node.value});
    }
    return positions;
}
