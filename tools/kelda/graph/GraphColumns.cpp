#include "graph/GraphColumns.h"

#include <algorithm>
#include <utility>

namespace KeldaTool {
namespace {

using Order = std::vector<std::uint32_t>;

constexpr int rounds = 12;

// Where each node stands, by its index.
Order positionsOf(Order const& order, std::size_t nodes) {
    Order positions(nodes);
    for (std::uint32_t i = 0; i < order.size(); ++i)
        positions[order[i]] = i;
    return positions;
}

// Counts, in a list, the pairs of which the first number is larger than the second.
class Inversions {
  public:
    explicit Inversions(std::size_t largest) : tree_(largest + 2) {}

    std::size_t of(Order const& numbers) {
        std::size_t count = 0;
        for (std::size_t seen = 0; seen < numbers.size(); ++seen) {
            count += seen - notLargerThan(numbers[seen]);
            add(numbers[seen]);
        }
        return count;
    }

  private:
    void add(std::size_t number) {
        for (auto at = number + 1; at < tree_.size(); at += at & (~at + 1))
            ++tree_[at];
    }
    std::size_t notLargerThan(std::size_t number) const {
        std::size_t count = 0;
        for (auto at = number + 1; at > 0; at -= at & (~at + 1))
            count += tree_[at];
        return count;
    }

    std::vector<std::size_t> tree_; // sums of ranges, by the lowest bit of their last index
};

class Untangling {
  public:
    Untangling(PathGraph const& graph, GraphColumns columns)
        : graph_(graph), columns_(std::move(columns)) {}

    GraphColumns run() {
        auto best = columns_;
        auto fewest = crossings(graph_, best);
        for (int round = 0; round < rounds && fewest > 0; ++round) {
            orderAgents();
            orderPaths();
            keep(best, fewest);
        }
        return best;
    }

  private:
    void keep(GraphColumns& best, std::size_t& fewest) const {
        auto const count = crossings(graph_, columns_);
        if (count >= fewest)
            return;
        fewest = count;
        best = columns_;
    }

    // Means of where neighbours stand, each column scaled to the same height.
    struct Mean {
        double sum = 0;
        double count = 0;
        double value() const { return count == 0 ? 0 : sum / count; }
    };

    static double height(Order const& column, std::uint32_t position) {
        return (position + 0.5) / static_cast<double>(std::max<std::size_t>(column.size(), 1));
    }

    void orderAgents() {
        auto const positions = positionsOf(columns_.paths, graph_.paths.size());
        std::vector<Mean> writers(graph_.agents.size());
        std::vector<Mean> readers(graph_.agents.size());
        for (auto const& edge : graph_.edges)
            add((edge.writes ? writers : readers)[edge.agent],
                height(columns_.paths, positions[edge.path]));
        sort(columns_.writers, writers);
        sort(columns_.readers, readers);
    }

    void orderPaths() {
        auto const writers = positionsOf(columns_.writers, graph_.agents.size());
        auto const readers = positionsOf(columns_.readers, graph_.agents.size());
        std::vector<Mean> paths(graph_.paths.size());
        for (auto const& edge : graph_.edges)
            add(paths[edge.path], edge.writes ? height(columns_.writers, writers[edge.agent])
                                              : height(columns_.readers, readers[edge.agent]));
        sort(columns_.paths, paths);
    }

    static void add(Mean& mean, double height) {
        mean.sum += height;
        mean.count += 1;
    }

    static void sort(Order& column, std::vector<Mean> const& means) {
        std::stable_sort(column.begin(), column.end(), [&](std::uint32_t a, std::uint32_t b) {
            return means[a].value() < means[b].value();
        });
    }

    PathGraph const& graph_;
    GraphColumns columns_;
};

} // namespace

GraphColumns columnsOf(PathGraph const& graph) {
    std::vector<bool> writes(graph.agents.size());
    std::vector<bool> onlyReads(graph.agents.size());
    for (auto const& edge : graph.edges)
        (edge.writes ? writes : onlyReads)[edge.agent] = true;
    GraphColumns columns;
    for (std::uint32_t i = 0; i < graph.agents.size(); ++i) {
        if (writes[i])
            columns.writers.push_back(i);
        if (onlyReads[i])
            columns.readers.push_back(i);
    }
    for (std::uint32_t i = 0; i < graph.paths.size(); ++i)
        columns.paths.push_back(i);
    return columns;
}

GraphColumns untangled(PathGraph const& graph, GraphColumns columns) {
    return Untangling(graph, std::move(columns)).run();
}

// In the order of their ends at the paths, two edges of a side cross if their other ends stand the
// other way round.
std::size_t crossings(PathGraph const& graph, GraphColumns const& columns) {
    auto const paths = positionsOf(columns.paths, graph.paths.size());
    std::size_t count = 0;
    for (bool const writes : {true, false}) {
        auto const agents =
            positionsOf(writes ? columns.writers : columns.readers, graph.agents.size());
        std::vector<std::pair<std::uint32_t, std::uint32_t>> edges;
        for (auto const& edge : graph.edges)
            if (edge.writes == writes)
                edges.emplace_back(paths[edge.path], agents[edge.agent]);
        std::sort(edges.begin(), edges.end());
        Order ends;
        for (auto const& edge : edges)
            ends.push_back(edge.second);
        count += Inversions(graph.agents.size()).of(ends);
    }
    return count;
}

} // namespace KeldaTool
