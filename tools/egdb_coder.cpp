#include "tools/egdb_coder.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr size_t PLACES = 6;   // followed side by side
constexpr size_t CHOICES = 5;  // longest rows tried from each place

// Builds the node for rows `first` to `last` of the sorted list, which are equal in their first `depth` runs
// and go on behind them.
struct TreeBuilder {
    CodeTree tree;
    std::span<const CodeRow> rows;
    std::vector<int32_t> order;  // row numbers, sorted by their runs

    const SymbolRun& run(size_t i, size_t depth) const { return rows[static_cast<size_t>(order[i])][depth]; }
    size_t runs(size_t i) const { return rows[static_cast<size_t>(order[i])].size(); }

    // The most positions that one of the rows has from `depth` on.
    int64_t most_from(size_t first, size_t last, size_t depth) const {
        int64_t most = 0;
        for (size_t i = first; i < last; ++i) {
            int64_t sum = 0;
            for (size_t d = depth; d < runs(i); ++d) sum += run(i, d).length;
            most = std::max(most, sum);
        }
        return most;
    }

    int32_t add_node(size_t first, size_t last, size_t depth) {
        const size_t node = tree.nodes.size();
        tree.nodes.emplace_back();
        struct Group {
            SymbolRun run;
            size_t first;
            size_t last;
        };
        std::vector<Group> groups;
        for (size_t i = first; i < last;) {
            size_t end = i + 1;
            while (end < last && run(end, depth) == run(i, depth)) ++end;
            groups.push_back({run(i, depth), i, end});
            i = end;
        }
        std::stable_sort(groups.begin(), groups.end(), [](const Group& a, const Group& b) {
            return a.run.symbol != b.run.symbol ? a.run.symbol < b.run.symbol : a.run.length > b.run.length;
        });
        const size_t first_edge = tree.edges.size();
        tree.edges.resize(first_edge + groups.size());
        for (size_t g = 0; g < groups.size(); ++g) {
            const Group& group = groups[g];
            CodeTree::Edge edge{group.run.length, -1, -1};
            size_t behind = group.first;
            // Equal rows do no harm; the first of them is used.
            while (behind < group.last && runs(behind) == depth + 1) {
                if (edge.row < 0) edge.row = order[behind];
                ++behind;
            }
            if (behind < group.last) edge.child = add_node(behind, group.last, depth + 1);
            tree.edges[first_edge + g] = edge;
            CodeTree::Branch& branch = tree.nodes[node][group.run.symbol];
            if (branch.last == 0) branch.first = static_cast<int32_t>(first_edge + g);
            branch.last = static_cast<int32_t>(first_edge + g + 1);
            branch.most_behind = std::max(branch.most_behind, most_from(group.first, group.last, depth + 1));
        }
        return static_cast<int32_t>(node);
    }
};

struct Fit {
    int64_t end = 0;
    int32_t row = -1;
};

// The longest rows that fit, longest first, at most N.
template <size_t N>
struct BestFits {
    std::array<Fit, N> fits;
    size_t count = 0;

    // What a row must pass to be of interest.
    int64_t bar() const { return count == N ? fits[N - 1].end : -1; }

    void add(int64_t end, int32_t row) {
        if (end <= bar()) return;
        size_t i = count < N ? count++ : N - 1;
        for (; i > 0 && fits[i - 1].end < end; --i) fits[i] = fits[i - 1];
        fits[i] = {end, row};
    }
};

template <size_t N>
void find_fits(const ValuePlanes& planes, const CodeTree& tree, const SymbolValues& values, int32_t node,
               int64_t at, BestFits<N>& best) {
    const auto& branches = tree.nodes[static_cast<size_t>(node)];
    for (size_t symbol = 0; symbol < 4; ++symbol) {
        const CodeTree::Branch& branch = branches[symbol];
        if (branch.first == branch.last) continue;
        const int64_t run = run_length(planes, values[symbol], at);
        if (run == 0) continue;
        const CodeTree::Edge* edge = tree.edges.data() + branch.first;
        const CodeTree::Edge* const last = tree.edges.data() + branch.last;
        edge = std::lower_bound(edge, last, run,
                                [](const CodeTree::Edge& e, int64_t length) { return e.length > length; });
        for (; edge != last && at + edge->length + branch.most_behind > best.bar(); ++edge) {
            if (edge->row >= 0) best.add(at + edge->length, edge->row);
            if (edge->child >= 0) find_fits(planes, tree, values, edge->child, at + edge->length, best);
        }
    }
}

// A place that so many bytes lead to.
struct Place {
    int64_t at = 0;
    int32_t from = 0;  // the place before it, in the layer before
    int32_t row = 0;
};
struct Layer {
    std::array<Place, PLACES> places;
    size_t count = 0;

    void add(const Place& place) {
        for (size_t i = 0; i < count; ++i)
            if (places[i].at == place.at) return;
        if (count == PLACES && place.at <= places[PLACES - 1].at) return;
        size_t i = count < PLACES ? count++ : PLACES - 1;
        for (; i > 0 && places[i - 1].at < place.at; --i) places[i] = places[i - 1];
        places[i] = place;
    }
};

}  // namespace

CodeTree code_tree(std::span<const CodeRow> rows) {
    TreeBuilder builder{{}, rows, std::vector<int32_t>(rows.size())};
    std::iota(builder.order.begin(), builder.order.end(), 0);
    std::stable_sort(builder.order.begin(), builder.order.end(), [&](int32_t a, int32_t b) {
        return rows[static_cast<size_t>(a)] < rows[static_cast<size_t>(b)];
    });
    if (rows.empty())
        builder.tree.nodes.emplace_back();
    else
        builder.add_node(0, rows.size(), 0);
    return std::move(builder.tree);
}

uint8_t vmap_byte(const SymbolValues& values) {
    return static_cast<uint8_t>(values[0] | values[1] << 2 | values[2] << 4 | values[3] << 6);
}

int64_t code_quickly(const ValuePlanes& planes, const CodeTree& tree, const SymbolValues& values,
                     int64_t start, int64_t bytes, int64_t& used) {
    int64_t at = start;
    for (used = 0; used < bytes && at < planes.size; ++used) {
        BestFits<1> best;
        find_fits(planes, tree, values, 0, at, best);
        if (best.count == 0) return -1;
        at = best.fits[0].end;
    }
    return at;
}

int64_t code_well(const ValuePlanes& planes, const CodeTree& tree, const SymbolValues& values, int64_t start,
                  int64_t bytes, std::vector<int32_t>& rows) {
    std::vector<Layer> layers(1);
    layers[0].add({start, 0, 0});
    while (static_cast<int64_t>(layers.size()) <= bytes && layers.back().places[0].at < planes.size) {
        Layer next;
        const Layer& layer = layers.back();
        for (size_t i = 0; i < layer.count; ++i) {
            BestFits<CHOICES> best;
            find_fits(planes, tree, values, 0, layer.places[i].at, best);
            for (size_t k = 0; k < best.count; ++k)
                next.add({best.fits[k].end, static_cast<int32_t>(i), best.fits[k].row});
        }
        if (next.count == 0) return -1;
        layers.push_back(next);
    }
    rows.resize(layers.size() - 1);
    size_t place = 0;
    for (size_t i = layers.size() - 1; i > 0; --i) {
        rows[i - 1] = layers[i].places[place].row;
        place = static_cast<size_t>(layers[i].places[place].from);
    }
    return layers.back().places[0].at;
}
