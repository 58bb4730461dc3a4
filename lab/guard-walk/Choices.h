#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// What a run was told wherever it could go one way or another: a script is followed to its end,
/// then the first of the options is taken. Asking for `next` after each run walks through every
/// combination, whatever the earlier choices make of the later questions.
class Choices {
public:
    using Script = std::vector<std::uint8_t>;

    /// How many things may go wrong at once; beyond that the first option is the only one.
    static constexpr int maxFaults = 2;

    /// Starts over, along another script.
    void follow(const Script& script) {
        script_ = script;
        begin();
    }

    /// Returns an index into the options. The first is what happens when nothing is wrong.
    std::size_t choose(std::initializer_list<std::string_view> options) {
        if (asked_.size() == script_.size())
            script_.push_back(0);
        const std::size_t taken = script_[asked_.size()];
        asked_.push_back(faults_ < maxFaults ? static_cast<std::uint8_t>(options.size()) : 1);
        if (taken != 0) {
            ++faults_;
            if (!options.begin()[taken].empty())
                told_.push_back(options.begin()[taken]);
        }
        return taken;
    }

    [[nodiscard]] const Script& script() const { return script_; }

    /// Tells whether no earlier run has come by here, and something may still go wrong.
    [[nodiscard]] bool isNewGround() const {
        return asked_.size() >= followed_ && faults_ < maxFaults;
    }

    [[nodiscard]] std::size_t asked() const { return asked_.size(); }

    /// Tells whether nothing went wrong.
    [[nodiscard]] bool isUneventful() const { return told_.empty(); }

    /// What went wrong, in words; empty when nothing did.
    [[nodiscard]] std::string story() const {
        std::string story;
        for (const std::string_view each : told_)
            story.append(story.empty() ? "" : ", ").append(each);
        return story;
    }

    /// Turns to the next combination; false when this was the last.
    bool next() {
        while (!script_.empty() && script_.back() + 1 == asked_.back()) {
            script_.pop_back();
            asked_.pop_back();
        }
        if (script_.empty())
            return false;
        ++script_.back();
        begin();
        return true;
    }

private:
    void begin() {
        followed_ = script_.size();
        asked_.clear();
        told_.clear();
        faults_ = 0;
    }

    Script script_;
    std::size_t followed_ = 0;           ///< choices of the script that were made before this run
    std::vector<std::uint8_t> asked_;    ///< how many options each question had
    std::vector<std::string_view> told_; ///< what was taken where something went wrong
    int faults_ = 0;
};

} // namespace velmo
