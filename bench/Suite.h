#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace velmo::bench {

/// What a comparison aims at: ours at least `factor` times as fast as the contender.
struct Aim {
    std::string contender;
    double factor;
};

/// One thing done to one input by us and by others, measured in the same run.
struct Comparison {
    std::string what;
    std::string input;
    std::vector<Aim> aims; ///< one for each contender, in the order of the table
};

/// How the cost of one thing grows with its input.
struct Growth {
    std::string what;
    std::string unit; ///< what is counted
    std::vector<long> sizes;
};

using Body = std::function<void(benchmark::State&)>;

inline constexpr const char* ours = "Velmo";

/// All there is to measure, and, once it has run, what came out.
class Suite {
public:
    /// `ours` and a body for each contender of the comparison.
    void compare(Comparison comparison, const std::map<std::string, Body>& bodies);

    /// The body is run with each of the sizes as `state.range(0)`.
    void grow(Growth growth, const Body& body);

    /// Runs everything, interleaved, and reads the medians. False when an argument is unknown.
    [[nodiscard]] bool run(int argc, char** argv);

    /// The tables for people; a missed aim is marked.
    [[nodiscard]] std::string markdown() const;

    /// A bar for every pair, on a logarithmic scale: to the right of 1 is where we are faster.
    [[nodiscard]] std::string svg() const;

private:
    struct Pair {
        const Comparison* comparison;
        const Aim* aim;
        double ours;   ///< seconds
        double theirs; ///< seconds
    };

    [[nodiscard]] std::vector<Pair> pairs() const;
    [[nodiscard]] double exponent(const Growth& growth) const;

    std::vector<Comparison> comparisons_;
    std::vector<Growth> growths_;
    std::map<std::string, double> medians_; ///< seconds for one run, by benchmark name
};

/// Keeps the compiler from working ahead: the value counts as used.
template<class T>
void use(T&& value) {
    benchmark::DoNotOptimize(value);
}

// What there is to measure, a function for each file.
void addCapture(Suite& suite);
void addClipboard(Suite& suite);
void addDaemon(Suite& suite);
void addFrames(Suite& suite);
void addHolds(Suite& suite);
void addInput(Suite& suite);
void addInventory(Suite& suite);
void addOutput(Suite& suite);
void addSignature(Suite& suite);
void addTextChunks(Suite& suite);

} // namespace velmo::bench
