#include "bench/Suite.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

namespace velmo::bench {

namespace {

constexpr double nanosecond = 1e-9; ///< seconds
constexpr double paler = 0.55;      ///< opacity of a bar

std::string nameOf(const std::string& what, const std::string& who) {
    return what + "|" + who;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::ranges::nth_element(values, middle);
    return *middle;
}

/// Collects the time of every repetition and shows the progress, if there is a terminal.
class Collector final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            if (run.error_occurred)
                throw std::runtime_error(run.benchmark_name() + ": " + run.error_message);
            seconds[run.run_name.function_name
                    + (run.run_name.args.empty() ? "" : "/" + run.run_name.args)]
                .push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
        }
        if (!runs.empty() && runs.front().run_type == Run::RT_Iteration)
            show(runs.front().benchmark_name());
    }

    void Finalize() override {
        show("");
        if (isTerminal_)
            std::fputc('\r', stderr);
    }

    std::map<std::string, std::vector<double>> seconds;

private:
    /// Puts a text in the place of the last one, on one line; in a file that would be many.
    void show(const std::string& text) const {
        if (isTerminal_)
            std::fprintf(stderr, "\r%-70.70s", text.c_str());
    }

    bool isTerminal_ = ::isatty(STDERR_FILENO) == 1;
};

std::string timeText(double seconds) {
    const std::pair<double, const char*> units[] = {
        {1.0, "s"}, {1e-3, "ms"}, {1e-6, "µs"}, {nanosecond, "ns"}};
    const auto* const unit =
        std::ranges::find_if(units, [&](const auto& u) { return seconds >= u.first; });
    const auto& [scale, name] = unit == std::end(units) ? units[3] : *unit;
    char text[32];
    std::snprintf(text, sizeof text, "%.3g %s", seconds / scale, name);
    return text;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value < 10 ? "%.2f" : "%.0f", value);
    return text;
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '<':
            result += "&lt;";
            break;
        case '&':
            result += "&amp;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

} // namespace

void Suite::compare(Comparison comparison, const std::map<std::string, Body>& bodies) {
    for (const auto& [who, body] : bodies)
        benchmark::RegisterBenchmark(nameOf(comparison.what, who).c_str(), body);
    sections_.back().comparisons.push_back(std::move(comparison));
}

void Suite::grow(Growth growth, const Body& body) {
    auto* const registered = benchmark::RegisterBenchmark(growth.what.c_str(), body);
    for (const long size : growth.sizes)
        registered->Arg(size);
    growths_.push_back(std::move(growth));
}

bool Suite::run(int argc, char** argv) {
    std::vector<std::string> words(argv, argv + argc);
    // The caller's options come later, and the later of two values counts.
    words.insert(words.begin() + 1,
                 {"--benchmark_repetitions=9", "--benchmark_enable_random_interleaving=true",
                  "--benchmark_min_time=0.02"});
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data()))
        return false;

    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    for (const auto& [name, seconds] : collector.seconds)
        medians_[name] = median(seconds);
    return true;
}

Suite::Verdict Suite::Pair::verdict() const {
    // An aim of 1 is neither met nor missed within the noise of a machine.
    constexpr double noise = 0.1;
    if (aim->factor == 1 && std::abs(factor() - 1) < noise)
        return Verdict::beside;
    return factor() >= aim->factor ? Verdict::met : Verdict::missed;
}

std::string Suite::Pair::aimText() const {
    const std::string text = aim->factor == 1 ? "beside" : number(aim->factor);
    return verdict() == Verdict::missed ? text + ", missed" : text;
}

std::vector<Suite::Pair> Suite::pairs(const Section& section) const {
    std::vector<Pair> pairs;
    for (const Comparison& comparison : section.comparisons) {
        const auto mine = medians_.find(nameOf(comparison.what, ours));
        for (const Aim& aim : comparison.aims) {
            const auto theirs = medians_.find(nameOf(comparison.what, aim.contender));
            if (mine != medians_.end() && theirs != medians_.end())
                pairs.push_back({.comparison = &comparison,
                                 .aim = &aim,
                                 .ours = mine->second,
                                 .theirs = theirs->second});
        }
    }
    return pairs;
}

/// Returns the slope of the line that fits the logarithms of size and time best: 1 if twice the
/// input takes twice the time. Not a number if nothing was measured.
double Suite::exponent(const Growth& growth) const {
    double n = 0;
    double sumX = 0;
    double sumY = 0;
    double sumXX = 0;
    double sumXY = 0;
    for (const long size : growth.sizes) {
        const auto found = medians_.find(growth.what + "/" + std::to_string(size));
        if (found == medians_.end())
            continue;
        const double x = std::log(static_cast<double>(size));
        const double y = std::log(found->second);
        n += 1;
        sumX += x;
        sumY += y;
        sumXX += x * x;
        sumXY += x * y;
    }
    return (n * sumXY - sumX * sumY) / (n * sumXX - sumX * sumX);
}

std::string Suite::markdown() const {
    std::ostringstream out;
    for (const Section& section : sections_) {
        out << "## " << section.title
            << "\n\n| what | input | ours | beside | theirs | ours is faster by | aim |\n"
               "|---|---|---|---|---|---|---|\n";
        const Comparison* last = nullptr;
        for (const Pair& pair : pairs(section)) {
            const bool first = pair.comparison != std::exchange(last, pair.comparison);
            const std::string& less = pair.aim->doesLess;
            out << "| " << (first ? pair.comparison->what : "") << " | "
                << (first ? pair.comparison->input : "") << " | " << timeText(pair.ours) << " | "
                << pair.aim->contender << (less.empty() ? "" : " (" + less + ")") << " | "
                << timeText(pair.theirs) << " | " << number(pair.factor()) << " | "
                << pair.aimText() << " |\n";
        }
        out << '\n';
    }
    if (growths_.empty())
        return out.str();
    out << "## How the cost grows\n\n| what | sizes | exponent |\n|---|---|---|\n";
    for (const Growth& growth : growths_) {
        if (!std::isfinite(exponent(growth)))
            continue; // The caller's filter left it out.
        out << "| " << growth.what << " | ";
        for (const long size : growth.sizes)
            out << size << ' ';
        out << growth.unit << " | " << number(exponent(growth)) << " |\n";
    }
    return out.str();
}

const char* Suite::colourOf(Verdict verdict) {
    switch (verdict) {
    case Verdict::met:
        return "#3a7d44";
    case Verdict::beside:
        return "#7f8c8d";
    case Verdict::missed:
        break;
    }
    return "#c0392b";
}

std::string Suite::svg() const {
    constexpr int rowHeight = 20;   ///< pixels
    constexpr int labelWidth = 330; ///< pixels
    constexpr int chartWidth = 520; ///< pixels
    constexpr int factorWidth = 60; ///< pixels, for the number behind a bar
    constexpr double leastStretch = 1.02;
    std::vector<Pair> all;
    for (const Section& section : sections_)
        std::ranges::copy(pairs(section), std::back_inserter(all));
    double least = 1 / leastStretch;
    double most = leastStretch;
    int groups = 0;
    const Comparison* last = nullptr;
    for (const Pair& pair : all) {
        least = std::min(least, pair.factor());
        most = std::max(most, pair.factor());
        groups += pair.comparison != std::exchange(last, pair.comparison) ? 1 : 0;
    }
    const auto x = [&](double factor) {
        return labelWidth + chartWidth * std::log(factor / least) / std::log(most / least);
    };
    const int top = 4 * rowHeight;
    const int height = top + rowHeight * (static_cast<int>(all.size()) + groups + 1);

    std::ostringstream out;
    const auto text = [&](double at, int y, const char* style, const std::string& words) {
        out << "<text x=\"" << at << "\" y=\"" << y << "\"" << style << ">" << escaped(words)
            << "</text>\n";
    };
    out << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")"
        << labelWidth + chartWidth + factorWidth << "\" height=\"" << height
        << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
           "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    text(10, 18, R"( font-weight="bold")",
         "How many times as fast as its peers (on a logarithmic scale)");
    double key = 10;
    for (const auto& [fill, opacity, words] :
         {std::tuple{colourOf(Verdict::met), 1.0, "meets its aim"},
          std::tuple{colourOf(Verdict::beside), 1.0, "beside its peer, as aimed"},
          std::tuple{colourOf(Verdict::missed), 1.0, "red: misses its aim"},
          std::tuple{colourOf(Verdict::met), paler,
                     "paler, of any colour: the peer does less of the work"}}) {
        out << "<rect x=\"" << key << "\" y=\"27\" width=\"12\" height=\"12\" fill=\"" << fill
            << "\" fill-opacity=\"" << opacity << "\"/>\n";
        text(key + 18, 37, "", words);
        key += 42 + 6.3 * static_cast<double>(std::string_view(words).size());
    }
    for (const double factor :
         {0.02, 0.05, 0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 50.0, 100.0, 200.0, 500.0}) {
        if (factor < least || factor > most)
            continue;
        out << "<line x1=\"" << x(factor) << "\" x2=\"" << x(factor) << "\" y1=\"" << top
            << "\" y2=\"" << height - rowHeight / 2 << "\" stroke=\""
            << (factor == 1.0 ? "#444" : "#ddd") << "\"/>\n";
        std::ostringstream tick;
        tick << factor << " ×";
        text(x(factor), top - 6, R"( text-anchor="middle")", tick.str());
    }
    int y = top;
    last = nullptr;
    for (const Pair& pair : all) {
        if (pair.comparison != std::exchange(last, pair.comparison)) {
            text(10, y + 15, R"( font-weight="bold")", pair.comparison->what);
            y += rowHeight;
        }
        const std::string& less = pair.aim->doesLess;
        const double at = x(pair.factor());
        text(labelWidth - 8, y + 14, R"( text-anchor="end")",
             pair.aim->contender + (less.empty() ? "" : " (" + less + ")"));
        out << "<rect x=\"" << std::min(x(1), at) << "\" y=\"" << y + 4 << "\" width=\""
            << std::abs(at - x(1)) << "\" height=\"" << rowHeight - 8 << "\" fill=\""
            << colourOf(pair.verdict()) << "\" fill-opacity=\"" << (less.empty() ? 1 : paler)
            << "\"/>\n";
        text(std::max(x(1), at) + 5, y + 14, "", number(pair.factor()));
        y += rowHeight;
    }
    out << "</svg>\n";
    return out.str();
}

} // namespace velmo::bench
