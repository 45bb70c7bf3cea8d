#include "tools/book_build.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <map>
#include <utility>

#include "core/ballots.h"

namespace {

constexpr int BALLOT_MOVES = 2;
// A line that changes its course needs more steps than its own and the opponent's moves.
constexpr int32_t STEPS_A_MOVE = 40;

void add_roots(BookGraph& graph, const BookBuildOptions& options) {
    add_book_root(graph, START_POSITION, 0);
    Ballot ballot{};
    for (int i = 0; find_ballot(BALLOT_MOVES, i, ballot); ++i)
        add_book_root(graph, ballot.position, options.ballot_cost);
}

int64_t analysed_count(const BookGraph& graph) { return static_cast<int64_t>(graph.analysed.size()); }

bool grow_best_first(BookGraph& graph, const BookBuildOptions& options, const BookAnalyst& analyst) {
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

// What is not known yet of the lines.
struct LineTasks {
    std::vector<BookTask> tasks;
    std::vector<int32_t> nodes;  // theirs
};

// The best moves of what was analysed for lines, by node and nodes of the search.
using LineMoves = std::map<std::pair<int32_t, uint64_t>, int32_t>;

void add_task(LineTasks& line_tasks, const BookGraph& graph, int32_t number, uint64_t nodes) {
    for (size_t i = 0; i < line_tasks.nodes.size(); ++i)
        if (line_tasks.nodes[i] == number && line_tasks.tasks[i].nodes == nodes) return;
    line_tasks.tasks.push_back({position_of_node(graph.nodes[static_cast<size_t>(number)]), nodes});
    line_tasks.nodes.push_back(number);
}

uint64_t reply_nodes(const BookLineOptions& lines, int32_t variant, int32_t reply) {
    const int32_t bits =
        std::max(1, static_cast<int32_t>(std::bit_width(static_cast<uint32_t>(lines.variants - 1))));
    const bool longer = variant >> reply % bits & 1;
    return longer ? lines.reply_nodes * 3 / 2 : lines.reply_nodes;
}

// Follows a line to its end or to the first thing that is not known, which becomes a task.
void follow_line(const BookGraph& graph, const BookLineOptions& options, const LineMoves& known,
                 int32_t number, int book_side, int32_t variant, LineTasks& line_tasks) {
    for (int32_t moves = 0, replies = 0; moves < options.moves;) {
        const BookNode& node = graph.nodes[static_cast<size_t>(number)];
        if (!node.has_moves || (node.analysed && std::abs(node.value) >= graph.costs.decided)) return;
        const bool own = node.side == book_side;
        const uint64_t nodes = own ? options.nodes : reply_nodes(options, variant, replies);
        const auto found = known.find({number, nodes});
        if (found == known.end() && (!own || node.searched < nodes))
            return add_task(line_tasks, graph, number, nodes);
        const int32_t other = own ? promising_move(graph, node, options.margin) : -1;
        if (other >= 0)
            return add_task(line_tasks, graph, node.edges[static_cast<size_t>(other)].child, nodes);
        const int32_t index = own ? node.best : found->second;
        number = node.edges[static_cast<size_t>(index)].child;
        ++(own ? moves : replies);
    }
}

LineTasks open_line_tasks(const BookGraph& graph, const BookLineOptions& options, const LineMoves& known) {
    LineTasks line_tasks;
    for (const BookGraph::Root& root : graph.roots)
        for (const int book_side : {BLACK, WHITE})
            for (int32_t variant = 0; variant < options.variants; ++variant)
                follow_line(graph, options, known, root.node, book_side, variant, line_tasks);
    return line_tasks;
}

// All lines go one step further at a time, and each from its root anew, as values that come back may change
// the book's choice.
bool grow_lines(BookGraph& graph, const BookLineOptions& options, const BookAnalyst& analyst) {
    LineMoves known;
    std::vector<BookAnalysis> analyses;
    for (int32_t step = 0; step < options.moves * STEPS_A_MOVE; ++step) {
        const LineTasks line_tasks = open_line_tasks(graph, options, known);
        if (line_tasks.tasks.empty()) return true;
        if (!analyst.analyse(analyst.context, line_tasks.tasks, analyses)) return false;
        for (size_t i = 0; i < analyses.size(); ++i) {
            const int32_t number = line_tasks.nodes[i];
            known[{number, line_tasks.tasks[i].nodes}] = analyses[i].best;
            add_book_analysis(graph, number, analyses[i]);
        }
        carry_back_values(graph);
    }
    return true;
}

}  // namespace

bool grow_book(BookGraph& graph, const BookBuildOptions& options, const BookAnalyst& analyst) {
    graph = BookGraph{};
    graph.costs = options.costs;
    add_roots(graph, options);
    return grow_best_first(graph, options, analyst) && grow_lines(graph, options.lines, analyst);
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
