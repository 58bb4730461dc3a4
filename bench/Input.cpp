#include "bench/Suite.h"
#include "core/input/InputMessage.h"

#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <simdjson.h>

#include <memory>
#include <random>

namespace velmo::bench {

namespace {

using Lines = std::vector<std::string>;

/// Returns the lines that a phone sends in about a minute: mostly movement, some scrolling, a few
/// keys and words.
Lines session() {
    std::mt19937 random(7);
    const auto upTo = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    Lines lines;
    for (int i = 0; i < 2000; ++i) {
        const std::string delta = R"(,"dx":)" + std::to_string(upTo(81) - 40) + R"(,"dy":)"
                                  + std::to_string(upTo(81) - 40) + "}";
        const int kind = upTo(20);
        if (kind < 12)
            lines.push_back(R"({"type":"move")" + delta);
        else if (kind < 16)
            lines.push_back(R"({"type":"scroll")" + delta);
        else if (kind < 18)
            lines.emplace_back(R"({"type":"key","key":"ArrowLeft","target":"41"})");
        else
            lines.emplace_back(R"({"type":"text","text":"naïve words, typed","target":"41"})");
    }
    return lines;
}

template<class Parse>
Body overLines(const std::shared_ptr<const Lines>& lines, Parse parse) {
    return [=](benchmark::State& state) {
        for (auto _ : state) {
            for (const std::string& line : *lines) {
                if (!parse(line))
                    state.SkipWithError("a line was refused");
            }
        }
    };
}

} // namespace

void addInput(Suite& suite) {
    const auto lines = std::make_shared<const Lines>(session());
    suite.compare({.what = "InputMessage::decode",
                   .input = "2000 lines of a session",
                   .aims = {{.contender = "simdjson", .factor = 0.35, .doesLess = parsesOnly},
                            {.contender = "RapidJSON", .factor = 1, .doesLess = parsesOnly},
                            {.contender = "nlohmann", .factor = 3, .doesLess = parsesOnly}}},
                  {{ours, overLines(lines,
                                    [](const std::string& line) {
                                        return InputMessage::decode(line).has_value();
                                    })},
                   {"simdjson",
                    [=](benchmark::State& state) {
                        simdjson::dom::parser parser;
                        for (auto _ : state) {
                            for (const std::string& line : *lines) {
                                if (parser.parse(line).error() != simdjson::SUCCESS)
                                    state.SkipWithError("a line was refused");
                            }
                        }
                    }},
                   {"RapidJSON", overLines(lines,
                                           [](const std::string& line) {
                                               rapidjson::Document document;
                                               document.Parse(line.data(), line.size());
                                               return !document.HasParseError();
                                           })},
                   {"nlohmann", overLines(lines, [](const std::string& line) {
                        return nlohmann::json::parse(line).is_object();
                    })}});
}

} // namespace velmo::bench
