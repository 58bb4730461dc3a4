#include "bench/Suite.h"
#include "core/input/TextChunks.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <memory>

namespace velmo::bench {

namespace {

std::string repeated(std::string_view text, std::size_t bytes) {
    std::string result;
    while (result.size() < bytes)
        result += text;
    return result;
}

/// Does the same job with ICU: builds the chunks of whole characters, as ICU's iterator finds them.
std::vector<std::string> splitWithIcu(icu::BreakIterator& characters, const std::string& text) {
    const icu::UnicodeString units = icu::UnicodeString::fromUTF8(text);
    characters.setText(units);
    std::vector<std::string> chunks;
    int32_t begin = 0;
    int32_t end = 0;
    const auto finish = [&] {
        if (end > begin)
            units.tempSubStringBetween(begin, end).toUTF8String(chunks.emplace_back());
        begin = end;
    };
    for (int32_t next = characters.next(); next != icu::BreakIterator::DONE;
         next = characters.next()) {
        if (next - begin > static_cast<int32_t>(TextChunks::limit))
            finish();
        end = next;
    }
    finish();
    return chunks;
}

void compareSplitting(Suite& suite, const std::string& input, const std::string& text, double aim) {
    suite.compare(
        {.what = "TextChunks::split, " + input,
         .input = std::to_string(text.size() >> 10) + " KiB",
         .aims = {{.contender = "ICU", .factor = aim}}},
        {{ours,
          [=](benchmark::State& state) {
              for (auto _ : state)
                  use(TextChunks::split(text));
          }},
         {"ICU", [=](benchmark::State& state) {
              UErrorCode error = U_ZERO_ERROR;
              const std::unique_ptr<icu::BreakIterator> characters(
                  icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
              if (splitWithIcu(*characters, text) != TextChunks::split(text))
                  state.SkipWithError("they cut differently");
              for (auto _ : state)
                  use(splitWithIcu(*characters, text));
          }}});
}

} // namespace

void addTextChunks(Suite& suite) {
    constexpr std::size_t size = std::size_t{64} << 10;
    const std::string prose = repeated("It was a bright cold day in April. ", size);
    compareSplitting(suite, "ASCII", prose, 10);
    compareSplitting(suite, "mixed scripts",
                     repeated("Grüße aus Köln, Привет из Москвы, 東京からこんにちは, שלום! ", size),
                     2);
    // Runs on one machine come to between 1.46 and 2.
    compareSplitting(suite, "emoji families",
                     repeated("👩‍👩‍👧‍👦 👍🏽 🇩🇪🇫🇷 ", size), 1.4);
    suite.grow({.what = "TextChunks::split",
                .unit = "bytes of ASCII",
                .sizes = {1 << 10, 1 << 13, 1 << 16, 1 << 19}},
               [](benchmark::State& state) {
                   const std::string text = repeated("It was a bright cold day in April. ",
                                                     static_cast<std::size_t>(state.range(0)));
                   for (auto _ : state)
                       use(TextChunks::split(text));
               });
}

} // namespace velmo::bench
