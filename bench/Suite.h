#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace velmo::bench {

/// The aim of a comparison: ours is at least `factor` times as fast as the contender.
struct Aim {
    std::string contender;
    double factor;             ///< 1: as fast as the contender
    std::string doesLess = {}; ///< what the contender leaves undone of the work, for people
};

inline constexpr const char* parsesOnly = "parses only";

/// The same work on the same input by ours and by the contenders, measured in the same run.
struct Comparison {
    std::string what;
    std::string input;     ///< described for people
    std::vector<Aim> aims; ///< one for each contender, in the order of the table
};

/// The growth of a cost with the size of its input.
struct Growth {
    std::string what;
    std::string unit;        ///< of the sizes
    std::vector<long> sizes; ///< of the input, ascending
};

using Body = std::function<void(benchmark::State&)>;

/// The name of our own body in a comparison.
inline constexpr const char* ours = "Velmo";

/// Everything that is measured and, after `run`, the results.
class Suite {
public:
    /// Begins a part of the tables, which gets the comparisons that follow.
    void begin(std::string section) { sections_.push_back({.title = std::move(section)}); }

    /// Adds a comparison to the part that was begun last. `bodies` contains one under the name
    /// `ours` and one for every contender.
    void compare(Comparison comparison, const std::map<std::string, Body>& bodies);

    /// Adds a growth. The body is run with each of the sizes as `state.range(0)`.
    void grow(Growth growth, const Body& body);

    /// Runs everything, with the repetitions interleaved, and keeps the median of each body.
    /// Returns false if an argument is unknown.
    [[nodiscard]] bool run(int argc, char** argv);

    /// Returns the results as tables in Markdown, one for each part. A missed aim is marked.
    [[nodiscard]] std::string markdown() const;

    /// Returns the comparisons as a picture: a bar for each contender, on a logarithmic scale,
    /// which points to the right of 1 if ours is faster.
    [[nodiscard]] std::string svg() const;

private:
    struct Section {
        std::string title;
        std::vector<Comparison> comparisons = {};
    };

    enum class Verdict { met, beside, missed };

    /// Two medians of one run, as far as both were measured.
    struct Pair {
        const Comparison* comparison;
        const Aim* aim;
        double ours;   ///< seconds
        double theirs; ///< seconds

        [[nodiscard]] double factor() const { return theirs / ours; }

        [[nodiscard]] Verdict verdict() const;
        [[nodiscard]] std::string aimText() const;
    };

    static const char* colourOf(Verdict verdict);

    [[nodiscard]] std::vector<Pair> pairs(const Section& section) const;
    [[nodiscard]] double exponent(const Growth& growth) const;

    std::vector<Section> sections_;
    std::vector<Growth> growths_;
    std::map<std::string, double> medians_; ///< seconds for one run, by benchmark name
};

/// Counts as a use of the value, so that the compiler does not leave out the work that makes it.
template<class T>
void use(T&& value) {
    benchmark::DoNotOptimize(value);
}

// These functions add what the file of the same name measures.
void addCapture(Suite& suite);
void addClipboard(Suite& suite);
void addDaemon(Suite& suite);
void addEcho(Suite& suite); ///< of a key; in Frames
void addFrames(Suite& suite);
void addHolds(Suite& suite);
void addInput(Suite& suite);
void addInventory(Suite& suite);
void addOutput(Suite& suite);
void addSignature(Suite& suite);
void addTextChunks(Suite& suite);

} // namespace velmo::bench
