#include "core/output/Output.h"

#include "bench/Suite.h"
#include "core/windows/WindowRecord.h"

#include <nlohmann/json.hpp>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdio>
#include <memory>

namespace velmo::bench {

namespace {

using Windows = std::vector<WindowRecord>;

/// Returns windows with texts that all writers escape alike, so that all write the same line.
Windows windows(std::size_t count) {
    Windows result;
    for (std::size_t i = 0; i < count; ++i) {
        const auto n = static_cast<int>(i);
        result.push_back({.id = static_cast<std::uint32_t>(n + 100),
                          .pid = n + 500,
                          .app = "Editor " + std::to_string(n % 20),
                          .appId = "com.example.editor",
                          .title = "Chapter " + std::to_string(n) + " \u2013 \"drafts\"",
                          .bounds = {.x = 10.0 + n, .y = 20.5, .width = 800, .height = 600.25},
                          .onScreen = n % 3 != 0,
                          .minimized = n % 7 == 0,
                          .front = n == 0,
                          .started = "1700000000"});
    }
    return result;
}

std::string withNlohmann(const Windows& windows) {
    nlohmann::json list = nlohmann::json::array();
    for (const WindowRecord& w : windows)
        list.push_back({{"app", w.app},
                        {"appId", w.appId},
                        {"bounds",
                         {{"height", w.bounds.height},
                          {"width", w.bounds.width},
                          {"x", w.bounds.x},
                          {"y", w.bounds.y}}},
                        {"front", w.front},
                        {"id", w.id},
                        {"minimized", w.minimized},
                        {"onScreen", w.onScreen},
                        {"pid", w.pid},
                        {"started", w.started},
                        {"title", w.title}});
    return list.dump();
}

std::string withRapidJson(const Windows& windows) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto text = [&](const char* key, const std::string& value) {
        writer.Key(key);
        writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    };
    const auto real = [&](const char* key, double value) {
        writer.Key(key);
        writer.Double(value);
    };
    const auto truth = [&](const char* key, bool value) {
        writer.Key(key);
        writer.Bool(value);
    };
    writer.StartArray();
    for (const WindowRecord& w : windows) {
        writer.StartObject();
        text("app", w.app);
        text("appId", w.appId);
        writer.Key("bounds");
        writer.StartObject();
        real("height", w.bounds.height);
        real("width", w.bounds.width);
        real("x", w.bounds.x);
        real("y", w.bounds.y);
        writer.EndObject();
        truth("front", w.front);
        writer.Key("id");
        writer.Uint(w.id);
        truth("minimized", w.minimized);
        truth("onScreen", w.onScreen);
        writer.Key("pid");
        writer.Int(w.pid);
        text("started", w.started);
        text("title", w.title);
        writer.EndObject();
    }
    writer.EndArray();
    return buffer.GetString();
}

/// Writes the line without looking for characters that must be escaped.
std::string withPrintf(const Windows& windows) {
    const auto truth = [](bool value) { return value ? "true" : "false"; };
    std::string list = "[";
    for (const WindowRecord& w : windows) {
        char line[1024];
        const int length = std::snprintf(
            line, sizeof line,
            R"(%s{"app":"%s","appId":"%s","bounds":{"height":%.17g,"width":%.17g,"x":%.17g,)"
            R"("y":%.17g},"front":%s,"id":%u,"minimized":%s,"onScreen":%s,"pid":%d,)"
            R"("started":"%s","title":"%s"})",
            list.size() > 1 ? "," : "", w.app.c_str(), w.appId.c_str(), w.bounds.height,
            w.bounds.width, w.bounds.x, w.bounds.y, truth(w.front), w.id, truth(w.minimized),
            truth(w.onScreen), w.pid, w.started.c_str(), w.title.c_str());
        list.append(line, static_cast<std::size_t>(length));
    }
    return list + "]";
}

template<class Write>
Body writing(const std::shared_ptr<const Windows>& windows, Write write) {
    return [=](benchmark::State& state) {
        for (auto _ : state)
            use(write(*windows));
    };
}

} // namespace

void addOutput(Suite& suite) {
    const auto records = std::make_shared<const Windows>(windows(200));
    suite.compare(
        {.what = "Output::jsonLine",
         .input = "200 window records",
         .aims = {{.contender = "nlohmann", .factor = 1},
                  {.contender = "RapidJSON", .factor = 1},
                  {.contender = "snprintf", .factor = 1}}},
        {{ours, writing(records, [](const Windows& w) { return Output::jsonLine(w).value(); })},
         {"nlohmann", writing(records, withNlohmann)},
         {"RapidJSON", writing(records, withRapidJson)},
         {"snprintf", writing(records, withPrintf)}});
}

} // namespace velmo::bench
