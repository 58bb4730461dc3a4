#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// The choices of a run, at every point where it could go one way or another. A run follows a
/// script to its end and then takes the first option at every further question. Calling `next`
/// after each run walks through every combination, even if later questions depend on earlier
/// choices.
class Choices {
public:
    using Script = std::vector<std::uint8_t>;

    /// How many things may go wrong in one run. After that, the first option is the only one.
    static constexpr int maxFaults = 2;

    /// Starts over with another script.
    void follow(const Script& script) {
        script_ = script;
        begin();
    }

    /// Returns an index into the options. The first option stands for nothing wrong.
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

    /// Tells whether no earlier run has reached this point, and something may still go wrong.
    [[nodiscard]] bool isNewGround() const {
        return asked_.size() >= followed_ && faults_ < maxFaults;
    }

    [[nodiscard]] std::size_t asked() const { return asked_.size(); }

    /// Tells whether nothing went wrong.
    [[nodiscard]] bool isUneventful() const { return told_.empty(); }

    /// Returns in words what went wrong; empty if nothing did.
    [[nodiscard]] std::string story() const {
        std::string story;
        for (const std::string_view each : told_)
            story.append(story.empty() ? "" : ", ").append(each);
        return story;
    }

    /// Turns to the next combination. Returns false after the last.
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
    std::vector<std::string_view> told_; ///< the options taken where something went wrong
    int faults_ = 0;
};

} // namespace velmo
