#include "bench/Suite.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <string_view>

namespace velmo::bench {

namespace {

constexpr double nanosecond = 1e-9; ///< seconds

std::string nameOf(const std::string& what, const std::string& who) {
    return what + "|" + who;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::ranges::nth_element(values, middle);
    return *middle;
}

/// Collects the time of every repetition and shows the progress on the terminal.
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
            std::fprintf(stderr, "\r%-70s", runs.front().benchmark_name().c_str());
    }

    void Finalize() override { std::fprintf(stderr, "\r%-70s\r", ""); }

    std::map<std::string, std::vector<double>> seconds;
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
    comparisons_.push_back(std::move(comparison));
}

void Suite::grow(Growth growth, const Body& body) {
    auto* const registered = benchmark::RegisterBenchmark(growth.what.c_str(), body);
    for (const long size : growth.sizes)
        registered->Arg(size);
    growths_.push_back(std::move(growth));
}

bool Suite::run(int argc, char** argv) {
    std::vector<std::string> words(argv, argv + argc);
    // Of two values of an option the later one counts, which is the caller's.
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

std::vector<Suite::Pair> Suite::pairs() const {
    std::vector<Pair> pairs;
    for (const Comparison& comparison : comparisons_) {
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
    out << "| what | input | ours | beside | theirs | ours is faster by | aim |\n"
           "|---|---|---|---|---|---|---|\n";
    const Comparison* last = nullptr;
    for (const Pair& pair : pairs()) {
        const double factor = pair.theirs / pair.ours;
        const bool first = pair.comparison != last;
        last = pair.comparison;
        out << "| " << (first ? pair.comparison->what : "") << " | "
            << (first ? pair.comparison->input : "") << " | " << timeText(pair.ours) << " | "
            << pair.aim->contender << " | " << timeText(pair.theirs) << " | " << number(factor)
            << " | " << (pair.aim->factor > 0 ? number(pair.aim->factor) : "none")
            << (factor >= pair.aim->factor ? "" : ", missed") << " |\n";
    }
    if (growths_.empty())
        return out.str();
    out << "\n| how the cost grows | sizes | exponent |\n|---|---|---|\n";
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

std::string Suite::svg() const {
    constexpr int rowHeight = 22;    ///< pixels
    constexpr int labelWidth = 470;  ///< pixels
    constexpr int chartWidth = 480;  ///< pixels
    constexpr double minDecade = -1; ///< the axis begins at a tenth
    constexpr double decades = 4;    ///< and ends at a thousand times
    const auto x = [](double factor) {
        const double place = (std::log10(factor) - minDecade) / decades;
        return labelWidth + chartWidth * std::clamp(place, 0.0, 1.0);
    };
    const auto all = pairs();
    const auto height = rowHeight * (static_cast<int>(all.size()) + 2);

    std::ostringstream out;
    out << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" << labelWidth + chartWidth + 70
        << "\" height=\"" << height
        << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
           "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    for (const double factor : {0.1, 1.0, 10.0, 100.0, 1000.0}) {
        out << "<line x1=\"" << x(factor) << "\" x2=\"" << x(factor) << "\" y1=\"" << rowHeight
            << "\" y2=\"" << height - rowHeight / 2 << "\" stroke=\""
            << (factor == 1.0 ? "#444" : "#ddd") << "\"/>\n<text x=\"" << x(factor)
            << "\" y=\"15\" text-anchor=\"middle\">" << factor << " ×</text>\n";
    }
    int y = rowHeight;
    for (const Pair& pair : all) {
        const double factor = pair.theirs / pair.ours;
        const double from = std::min(x(1), x(factor));
        const double width = std::abs(x(factor) - x(1));
        out << "<text x=\"" << labelWidth - 8 << "\" y=\"" << y + 15 << "\" text-anchor=\"end\">"
            << escaped(pair.comparison->what) << " / " << escaped(pair.aim->contender)
            << "</text>\n<rect x=\"" << from << "\" y=\"" << y + 4 << "\" width=\"" << width
            << "\" height=\"" << rowHeight - 8 << "\" fill=\""
            << (factor >= pair.aim->factor ? "#3a7d44" : "#c0392b") << "\"/>\n<text x=\""
            << std::max(x(1), x(factor)) + 5 << "\" y=\"" << y + 15 << "\">" << number(factor)
            << "</text>\n";
        y += rowHeight;
    }
    out << "</svg>\n";
    return out.str();
}

} // namespace velmo::bench
