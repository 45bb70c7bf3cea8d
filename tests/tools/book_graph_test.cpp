// The graph of a book under construction: minimax over transpositions and cycles, the order of the work, and
// that the reader of the finished book finds the values that the builder meant.
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <set>

#include "tests/book/book_fixture.h"
#include "tools/book_build.h"
#include "tools/book_graph.h"

namespace {

// An analysis that depends on the position alone.
BookAnalysis made_up(const Position& position, int spread) {
    std::mt19937_64 random(BookKeyHash{}(
        {position.black, position.white, position.king * 2 + static_cast<uint64_t>(position.side)}));
    const auto value = [&] {
        return static_cast<int>(random() % static_cast<uint64_t>(2 * spread + 1)) - spread;
    };
    MoveList list;
    const int count = generate_moves(position, list, position.side);
    BookAnalysis analysis;
    analysis.value = value();
    analysis.best = static_cast<int>(random() % static_cast<uint64_t>(count));
    analysis.nodes = 1000;
    for (int i = 0; i < count; ++i) analysis.quick.push_back(static_cast<int16_t>(value()));
    return analysis;
}

struct Analyst {
    int spread = 20;
    int64_t budget = std::numeric_limits<int64_t>::max();
    int64_t asked = 0;
    std::vector<uint64_t> nodes{};  // asked for
};

bool analyse(void* context, std::span<const BookTask> tasks, std::vector<BookAnalysis>& analyses) {
    Analyst& analyst = *static_cast<Analyst*>(context);
    analyses.clear();
    for (const BookTask& task : tasks) {
        if (analyst.asked == analyst.budget) return false;
        ++analyst.asked;
        analyst.nodes.push_back(task.nodes);
        analyses.push_back(made_up(task.position, analyst.spread));
    }
    return true;
}

BookGraph grown(int64_t positions, int spread = 20) {
    Analyst analyst{spread};
    BookGraph graph;
    BookBuildOptions options;
    options.positions = positions;
    EXPECT_TRUE(grow_book(graph, options, {&analyst, analyse}));
    return graph;
}

// A graph of an ending, where kings go to and fro.
BookGraph grown_from(const Position& root, size_t positions, int spread) {
    BookGraph graph;
    graph.costs.decided = 5000;
    add_book_root(graph, root, 0);
    while (graph.analysed.size() < positions) {
        const std::vector<int32_t> nodes = nodes_to_analyse(graph, 16);
        if (nodes.empty()) break;
        for (const int32_t node : nodes)
            add_book_analysis(graph, node,
                              made_up(position_of_node(graph.nodes[static_cast<size_t>(node)]), spread));
        carry_back_values(graph);
    }
    return graph;
}

const BookNode& node_at(const BookGraph& graph, int32_t number) {
    return graph.nodes[static_cast<size_t>(number)];
}

// The value of each analysed node, found for each possible value at a time: whether black can make sure of as
// much. What is above a draw must be reached, what is below must be avoided for ever.
std::map<int32_t, int> slow_values(const BookGraph& graph) {
    std::set<int> values = {0};
    for (const int32_t number : graph.analysed) values.insert(node_at(graph, number).search_value);
    std::map<int32_t, int> result;
    for (const int32_t number : graph.analysed) result[number] = *values.begin();
    for (const int threshold : values) {
        std::map<int32_t, bool> sure;
        for (const int32_t number : graph.analysed) sure[number] = threshold <= 0;
        for (bool changed = true; changed;) {
            changed = false;
            for (const int32_t number : graph.analysed) {
                const BookNode& node = node_at(graph, number);
                bool any = false, all = true;
                for (size_t i = 0; i < node.edges.size(); ++i) {
                    const bool analysed = node_at(graph, node.edges[i].child).analysed;
                    if (!analysed && static_cast<int>(i) != node.search_best) continue;
                    const bool holds = analysed ? sure[node.edges[i].child] : node.search_value >= threshold;
                    any |= holds;
                    all &= holds;
                }
                const bool now = node.side == BLACK ? any : all;
                if (now != sure[number]) {
                    sure[number] = now;
                    changed = true;
                }
            }
        }
        for (const int32_t number : graph.analysed)
            if (sure[number]) result[number] = threshold;
    }
    return result;
}

void expect_slow_values(const BookGraph& graph) {
    for (const auto& [number, value] : slow_values(graph))
        ASSERT_EQ(node_at(graph, number).value, value) << number;
}

const char* const KING_ENDING = "W:WK46,41,37:BK5,10";

}  // namespace

using BookGraphTest = BookTest;

TEST_F(BookGraphTest, ValuesAreCarriedBackOverTranspositions) {
    const BookGraph graph = grown(1500);
    EXPECT_EQ(graph.analysed.size(), 1500u);
    expect_slow_values(graph);
}

TEST_F(BookGraphTest, CyclesAreDraws) {
    for (const char* fen : {KING_ENDING, "W:WK46:BK5,K6", "B:WK46,K47:BK5,6,11"})
        for (const int spread : {3, 20, 500}) expect_slow_values(grown_from(position_of(fen), 300, spread));
}

TEST_F(BookGraphTest, BestMovesHaveTheValueOfTheirNode) {
    for (const BookGraph& graph : {grown(800), grown_from(position_of(KING_ENDING), 300, 20)})
        for (const int32_t number : graph.analysed) {
            const BookNode& node = node_at(graph, number);
            ASSERT_GE(node.best, 0);
            ASSERT_LT(static_cast<size_t>(node.best), node.edges.size());
            const BookNode& child = node_at(graph, node.edges[static_cast<size_t>(node.best)].child);
            ASSERT_EQ(node.value, child.analysed ? child.value : node.search_value);
            ASSERT_TRUE(child.analysed || node.best == node.search_best);
        }
}

// Otherwise a win would be a draw on the board.
TEST_F(BookGraphTest, BestLinesOfWhatIsNoDrawComeToAnEnd) {
    int followed = 0;
    for (const char* fen : {KING_ENDING, "W:WK46:BK5,K6", "B:WK46,K47:BK5,6,11"}) {
        const BookGraph graph = grown_from(position_of(fen), 400, 20);
        for (const int32_t start : graph.analysed) {
            if (node_at(graph, start).value == 0) continue;
            int32_t number = start;
            std::set<int32_t> seen;
            while (node_at(graph, number).analysed) {
                ASSERT_TRUE(seen.insert(number).second) << fen << ' ' << start;
                const BookNode& node = node_at(graph, number);
                number = node.edges[static_cast<size_t>(node.best)].child;
            }
            ++followed;
        }
    }
    EXPECT_GT(followed, 100);
}

TEST_F(BookGraphTest, CostsAreThoseOfTheCheapestWay) {
    BookGraph graph = grown(600);
    nodes_to_analyse(graph, 1);
    const int32_t none = std::numeric_limits<int32_t>::max();
    for (const int colour : {BLACK, WHITE}) {
        std::vector<int64_t> cost(graph.nodes.size(), none);
        for (const auto& root : graph.roots)
            cost[static_cast<size_t>(root.node)] =
                std::min<int64_t>(cost[static_cast<size_t>(root.node)], root.cost);
        for (bool changed = true; changed;) {
            changed = false;
            for (const int32_t number : graph.analysed) {
                const BookNode& node = node_at(graph, number);
                const int sign = node.side == BLACK ? 1 : -1;
                const int quick_best = sign * node.edges[static_cast<size_t>(node.search_best)].quick;
                for (const BookEdge& edge : node.edges) {
                    const BookNode& child = node_at(graph, edge.child);
                    const int worth = child.analysed ? sign * child.value
                                                     : sign * node.search_value -
                                                           std::max(0, quick_best - sign * edge.quick);
                    const int loss = std::max(0, sign * node.value - worth);
                    const int64_t way =
                        cost[static_cast<size_t>(number)] + 4 + loss * (node.side == colour ? 6 : 2);
                    if (way >= cost[static_cast<size_t>(edge.child)]) continue;
                    cost[static_cast<size_t>(edge.child)] = way;
                    changed = true;
                }
            }
        }
        for (size_t i = 0; i < graph.nodes.size(); ++i)
            ASSERT_EQ(graph.nodes[i].cost[static_cast<size_t>(colour)], cost[i]) << i;
    }
}

TEST_F(BookGraphTest, TheCheapestAreAnalysedFirst) {
    BookGraph graph = grown(600);
    const std::vector<int32_t> nodes = nodes_to_analyse(graph, 50);
    ASSERT_EQ(nodes.size(), 50u);
    const auto cost = [&](int32_t n) {
        return std::min(node_at(graph, n).cost[0], node_at(graph, n).cost[1]);
    };
    const std::set<int32_t> chosen(nodes.begin(), nodes.end());
    EXPECT_TRUE(
        std::is_sorted(nodes.begin(), nodes.end(), [&](int32_t a, int32_t b) { return cost(a) < cost(b); }));
    for (size_t i = 0; i < graph.nodes.size(); ++i) {
        const auto number = static_cast<int32_t>(i);
        const BookNode& node = graph.nodes[i];
        if (node.analysed || !node.has_moves) {
            EXPECT_FALSE(chosen.contains(number));
        } else if (!chosen.contains(number)) {
            EXPECT_GE(cost(number), cost(nodes.back()));
        }
    }
}

TEST_F(BookGraphTest, NothingIsAnalysedBehindADecidedPosition) {
    BookGraph graph;
    add_book_root(graph, START_POSITION, 0);
    BookAnalysis analysis = made_up(START_POSITION, 10);
    analysis.value = 400;
    add_book_analysis(graph, 0, analysis);
    carry_back_values(graph);
    EXPECT_TRUE(nodes_to_analyse(graph, 10).empty());
}

TEST_F(BookGraphTest, BeginsAtTheStartAndTheBallots) {
    BookGraph graph = grown(100);
    EXPECT_EQ(graph.roots.size(), 80u);
    const size_t nodes = graph.nodes.size();
    EXPECT_TRUE(node_at(graph, book_node(graph, START_POSITION)).analysed);
    book_node(graph, after_moves(START_POSITION, "32-28 19-23"));
    EXPECT_EQ(graph.nodes.size(), nodes) << "both are there";
    for (const auto& root : graph.roots) EXPECT_EQ(root.cost, root.node == 0 ? 0 : 8);
}

// What is asked for later does not change what was done before.
TEST_F(BookGraphTest, ASmallerBookIsTheBeginningOfALargerOne) {
    const BookGraph large = grown(700);
    for (const int64_t positions : {0, 1, 63, 64, 65, 300, 699}) {
        const BookGraph small = grown(positions);
        ASSERT_EQ(small.analysed.size(), static_cast<size_t>(positions));
        for (size_t i = 0; i < small.analysed.size(); ++i)
            ASSERT_EQ(book_positions(small, 4)[i].position.black,
                      position_of_node(node_at(large, large.analysed[i])).black);
        if (positions > 65) break;
    }
}

TEST_F(BookGraphTest, StopsWithTheAnalyst) {
    Analyst analyst;
    analyst.budget = 100;
    BookGraph graph;
    BookBuildOptions options;
    options.positions = 500;
    EXPECT_FALSE(grow_book(graph, options, {&analyst, analyse}));
    EXPECT_EQ(analyst.asked, 100);
}

TEST_F(BookGraphTest, TheFirstAreSearchedDeeper) {
    Analyst analyst;
    BookGraph graph;
    BookBuildOptions options;
    options.positions = 500;
    options.deep_positions = 100;
    EXPECT_TRUE(grow_book(graph, options, {&analyst, analyse}));
    ASSERT_EQ(analyst.nodes.size(), 500u);
    for (size_t i = 0; i < analyst.nodes.size(); ++i)
        EXPECT_EQ(analyst.nodes[i], i < 100 ? options.deep_nodes : options.nodes) << i;
    EXPECT_EQ(graph.searched_nodes, 500u * 1000u);
}

TEST_F(BookGraphTest, ADeeperSearchTakesThePlaceOfAnother) {
    BookGraph graph;
    add_book_root(graph, START_POSITION, 0);
    BookAnalysis analysis = made_up(START_POSITION, 10);
    add_book_analysis(graph, 0, analysis);
    const auto enter = [&](uint64_t nodes, int32_t value, int32_t best) {
        analysis.nodes = nodes;
        analysis.value = value;
        analysis.best = best;
        add_book_analysis(graph, 0, analysis);
        carry_back_values(graph);
    };
    enter(2000, 22, 5);
    EXPECT_EQ(graph.nodes[0].value, 22);
    EXPECT_EQ(graph.nodes[0].best, 5);
    enter(1500, 33, 6);
    EXPECT_EQ(graph.nodes[0].value, 22);
    EXPECT_EQ(graph.nodes[0].best, 5);
    EXPECT_EQ(graph.analysed.size(), 1u);
    EXPECT_EQ(graph.searched_nodes, 3000u);
}

// By its distance in the short searches, no move without an analysis looks better than the best one, or only
// by less than the margin worse.
void expect_nothing_better(const BookGraph& graph, const BookNode& node, int margin) {
    const int sign = node.side == BLACK ? 1 : -1;
    const int quick_best = sign * node.edges[static_cast<size_t>(node.search_best)].quick;
    for (const BookEdge& edge : node.edges) {
        const BookNode& child = node_at(graph, edge.child);
        const bool is_best = &edge == &node.edges[static_cast<size_t>(node.best)];
        if (is_best || child.analysed || !child.has_moves || child.black == 0) continue;
        ASSERT_LE(sign * node.search_value - std::max(0, quick_best - sign * edge.quick),
                  sign * node.value - margin);
    }
}

// Each line from a root is followed by the test itself, by the book's moves and those that the analyst finds
// for the opponent.
void expect_lines(const BookGraph& graph, int32_t root, const BookLineOptions& options) {
    for (const int book_side : {BLACK, WHITE}) {
        int32_t number = root;
        for (int moves = 0; moves < options.moves;) {
            const BookNode& node = node_at(graph, number);
            if (!node.has_moves) break;
            ASSERT_TRUE(node.analysed) << root << ' ' << book_side << ' ' << moves;
            const bool own = node.side == book_side;
            if (own) expect_nothing_better(graph, node, options.margin);
            const int32_t index = own ? node.best : made_up(position_of_node(node), 20).best;
            number = node.edges[static_cast<size_t>(index)].child;
            moves += own;
        }
    }
}

void expect_all_lines(const BookGraph& graph, const BookBuildOptions& options) {
    for (const auto& root : graph.roots) expect_lines(graph, root.node, options.lines);
}

BookLineOptions short_lines(int32_t moves, int32_t margin) {
    return {.moves = moves, .variants = 2, .nodes = 90000, .reply_nodes = 5000, .margin = margin};
}

TEST_F(BookGraphTest, LinesGoAsGamesDo) {
    Analyst analyst;
    BookGraph graph;
    BookBuildOptions options;
    options.positions = 200;
    options.lines = short_lines(6, 0);
    ASSERT_TRUE(grow_book(graph, options, {&analyst, analyse}));
    std::map<uint64_t, int> asked;
    for (const uint64_t nodes : analyst.nodes) ++asked[nodes];
    EXPECT_EQ(asked[options.nodes], 200);
    EXPECT_GT(asked[5000], 200);
    EXPECT_GT(asked[7500], 200);
    EXPECT_GT(asked[90000], 400);
    EXPECT_EQ(asked.size(), 4u);
    expect_all_lines(graph, options);
    Analyst again;
    BookGraph same;
    ASSERT_TRUE(grow_book(same, options, {&again, analyse}));
    EXPECT_EQ(same.analysed, graph.analysed);
    EXPECT_EQ(again.nodes, analyst.nodes);
    again = Analyst{};
    again.budget = 250;
    EXPECT_FALSE(grow_book(same, options, {&again, analyse})) << "stopped in the midst of the lines";
}

TEST_F(BookGraphTest, OwnMovesThatLookNearlyAsGoodAreAnalysedToo) {
    size_t before = 0;
    for (const int32_t margin : {0, 3, 12}) {
        Analyst analyst;
        BookGraph graph;
        BookBuildOptions options;
        options.positions = 100;
        options.lines = short_lines(4, margin);
        ASSERT_TRUE(grow_book(graph, options, {&analyst, analyse}));
        expect_all_lines(graph, options);
        EXPECT_GT(graph.analysed.size(), before);
        before = graph.analysed.size();
    }
}

TEST_F(BookGraphTest, TheSecondBestMoveIsNearTheBest) {
    const BookGraph graph = grown(2000);
    int seconds = 0;
    for (const int32_t margin : {0, 4, 1000})
        for (const int32_t number : graph.analysed) {
            const BookNode& node = node_at(graph, number);
            const int32_t second = second_best_move(graph, node, margin);
            const int sign = node.side == BLACK ? 1 : -1;
            int best_other = -10000;
            for (size_t i = 0; i < node.edges.size(); ++i) {
                const BookNode& child = node_at(graph, node.edges[i].child);
                if (static_cast<int>(i) != node.best && child.analysed)
                    best_other = std::max(best_other, sign * child.value);
            }
            if (second < 0) {
                ASSERT_LT(best_other, sign * node.value - margin);
                continue;
            }
            ++seconds;
            ASSERT_NE(second, node.best);
            const BookNode& child = node_at(graph, node.edges[static_cast<size_t>(second)].child);
            ASSERT_TRUE(child.analysed);
            ASSERT_EQ(sign * child.value, best_other);
            ASSERT_LE(sign * node.value - best_other, margin);
        }
    EXPECT_GT(seconds, 20);
}

// The builder's values are those that the reader finds at the ends of the lines.
TEST_F(BookGraphTest, TheReaderFindsTheValuesThatWereMeant) {
    std::vector<BookGraph> graphs = {grown(1500), grown(1500, 3),
                                     grown_from(position_of(KING_ENDING), 400, 20),
                                     grown_from(position_of("W:WK46:BK5,K6"), 400, 6)};
    for (const BookGraph& graph : graphs) {
        const std::vector<BookPosition> positions = book_positions(graph, 4);
        ASSERT_EQ(load_positions(positions), 0);
        std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
        for (const BookPosition& p : positions) {
            std::fill(memory.begin(), memory.end(), std::byte{0});
            LineMemo line;
            ASSERT_TRUE(book_line(opening_book, memory, p.position, p.position.side, line));
            ASSERT_EQ(line.value, p.value);
        }
    }
}

// In the mode of best moves the engine plays what the builder chose.
TEST_F(BookGraphTest, TheReaderPlaysTheMovesThatWereMeant) {
    const std::vector<BookPosition> positions = book_positions(grown(1500), 4);
    ASSERT_EQ(load_positions(positions), 0);
    std::vector<std::byte> memory(static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES);
    int seconds = 0;
    for (const BookPosition& p : positions) {
        MoveList list;
        generate_moves(p.position, list, p.position.side);
        std::set<int> chosen;
        for (int i = 0; i < 40; ++i) {
            int index = -1, value = 0;
            char text[BOOK_TEXT_SIZE];
            ASSERT_EQ(book_move(p.position, p.position.side, list, {3, memory}, index, value, text), 1);
            chosen.insert(index);
        }
        std::set<int> meant = {p.best};
        if (p.second != NO_BOOK_MOVE) meant.insert(p.second);
        ASSERT_EQ(chosen, meant);
        seconds += p.second != NO_BOOK_MOVE;
    }
    EXPECT_GT(seconds, 20);
}
