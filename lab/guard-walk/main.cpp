/// guard-walk: walks through everything that can happen to a guard and its sessions, in every
/// order, until no new state turns up, and checks for each state that the Mac comes out of it
/// unharmed. Prints how much it saw, and the shortest way to the first harm.
///
///     guard-walk          everything
///     guard-walk brief    without the two largest spaces, for builds with slow steps

#include "lab/guard-walk/ExploredMac.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using namespace velmo;

struct Step {
    Event event;
    Choices::Script script;
};

class Walk {
public:
    Walk(bool sleepDisabled, ExploredMac::Aspect aspect, ExploredMac::Flaw flaw)
        : sleepDisabled_(sleepDisabled), aspect_(aspect), flaw_(flaw) {}

    /// Returns in words the first path that leads to a violation; empty if the walk finds no
    /// violation.
    std::string run() {
        visit(ExploredMac(sleepDisabled_, aspect_, flaw_), 0, {});
        for (std::size_t state = 0; state < states_.size() && finding_.empty(); ++state)
            expand(state);
        return finding_;
    }

    [[nodiscard]] std::size_t states() const { return states_.size(); }

    [[nodiscard]] std::size_t paths() const { return paths_; }

    [[nodiscard]] std::size_t farthest() const { return states_.back().depth; }

    [[nodiscard]] std::size_t losses(ExploredMac::Loss loss) const {
        return losses_.at(std::to_underlying(loss));
    }

private:
    struct State {
        std::size_t parent;
        std::size_t depth;
        Step step; ///< from the parent to here
    };

    using Way = std::vector<std::size_t>; ///< states, from the second on

    void expand(std::size_t state) {
        const auto passed = way(state);
        ExploredMac there(sleepDisabled_, aspect_, flaw_);
        arrive(passed, there);
        for (const Event event : events()) {
            if (there.possible(event))
                expand(state, passed, event);
            if (!finding_.empty())
                return;
        }
    }

    void expand(std::size_t state, const Way& passed, Event event) {
        const auto reach = [&](const ExploredMac& mac, Choices::Script script) {
            ++paths_;
            visit(mac, state, {.event = event, .script = std::move(script)});
        };
        Choices choices;
        do {
            ExploredMac mac(sleepDisabled_, aspect_, flaw_);
            arrive(passed, mac);
            mac.run(event, choices, reach);
            if (!mac.violation().empty())
                finding_.clear(); // the story without a kill is the shorter one
            reach(mac, choices.script());
        } while (finding_.empty() && choices.next());
    }

    void visit(const ExploredMac& reached, std::size_t parent, Step step) {
        const bool fresh = seen_.emplace(reached.key(), states_.size()).second;
        if ((!fresh && reached.violation().empty()) || !finding_.empty())
            return;
        const std::size_t depth = states_.empty() ? 0 : states_[parent].depth + 1;
        ++losses_.at(std::to_underlying(reached.loss()));
        states_.push_back({.parent = parent, .depth = depth, .step = std::move(step)});
        ExploredMac mac(sleepDisabled_, aspect_, flaw_);
        arrive(way(states_.size() - 1), mac);
        if (mac.key() != reached.key() || mac.violation() != reached.violation())
            finding_ = story(states_.size() - 1) + ": leads elsewhere the second time";
        if (mac.violation().empty() && mac.loss() == ExploredMac::Loss::none)
            mac.settle();
        if (!mac.violation().empty())
            finding_ = story(states_.size() - 1) + ": " + mac.violation();
    }

    /// Takes a new Mac along the way, and adds what happens to `story` if one is given.
    void arrive(const Way& way, ExploredMac& mac, std::string* story = nullptr) const {
        Choices choices;
        for (const std::size_t passed : way) {
            const Step& step = states_[passed].step;
            choices.follow(step.script);
            mac.run(step.event, choices);
            if (story)
                *story += "; " + step.event.name()
                          + (choices.isUneventful() ? "" : " (" + choices.story() + ")");
        }
    }

    [[nodiscard]] Way way(std::size_t state) const {
        Way way;
        for (; state != 0; state = states_[state].parent)
            way.push_back(state);
        std::ranges::reverse(way);
        return way;
    }

    [[nodiscard]] std::string story(std::size_t state) const {
        ExploredMac mac(sleepDisabled_, aspect_, flaw_);
        std::string story = sleepDisabled_ ? "sleep disabled" : "sleep enabled";
        arrive(way(state), mac, &story);
        return story;
    }

    static std::vector<Event> events() {
        std::vector<Event> events;
        for (std::uint8_t i = 0; i <= std::to_underlying(Happening::terminateWithHoldBehind); ++i) {
            const auto happening = static_cast<Happening>(i);
            events.push_back({.happening = happening, .client = 0});
            if (happening >= Happening::connect)
                events.push_back({.happening = happening, .client = 1});
        }
        return events;
    }

    bool sleepDisabled_;
    ExploredMac::Aspect aspect_;
    ExploredMac::Flaw flaw_;
    std::vector<State> states_;
    std::unordered_map<std::uint64_t, std::size_t> seen_;
    std::size_t paths_ = 0;
    std::array<std::size_t, 4> losses_{}; ///< states by how the Mac was lost
    std::string finding_;
};

constexpr std::pair<ExploredMac::Loss, const char*> losses[] = {
    {ExploredMac::Loss::record, "the record was lost or rotted, and then the daemon ended"},
    {ExploredMac::Loss::blindUndo,
     "a hold was refused because nothing could read the setting, and could not be undone"},
    {ExploredMac::Loss::lateAfterUndo,
     "a hold was refused and could not be undone, and its setting landed afterwards"},
};

/// Walks a sound Mac. Returns whether no harm is found, whatever happens.
bool isSafe(bool sleepDisabled, ExploredMac::Aspect aspect) {
    Walk walk(sleepDisabled, aspect, ExploredMac::Flaw::none);
    const std::string finding = walk.run();
    std::cout << (aspect == ExploredMac::Aspect::lid ? "the lid, " : "faults, ") << "sleep "
              << (sleepDisabled ? "disabled" : "enabled") << " beforehand: " << walk.states()
              << " states, the farthest " << walk.farthest() << " events away, " << walk.paths()
              << " paths between them\n";
    for (const auto& [loss, what] : losses) {
        if (walk.losses(loss) > 0)
            std::cout << "    beyond any program in " << walk.losses(loss) << " of them: " << what
                      << "\n";
    }
    if (!finding.empty())
        std::cout << "    HARM: " << finding << "\n";
    return finding.empty();
}

/// Walks a Mac with a flaw. Returns whether the walk notices it; a walk that does not is blind.
bool notices(ExploredMac::Flaw flaw, const char* what) {
    const std::string finding = Walk(false, ExploredMac::Aspect::faults, flaw).run();
    std::cout << what << ": " << (finding.empty() ? "NOT NOTICED" : finding) << "\n";
    return !finding.empty();
}

} // namespace

int main(int argc, char** argv) {
    using enum ExploredMac::Flaw;
    using enum ExploredMac::Aspect;
    const bool isBrief = argc == 2 && std::string_view(argv[1]) == "brief";
    if (argc > 1 && !isBrief) {
        std::cerr << "usage: guard-walk [brief]\n";
        return 2;
    }
    const bool good[] = {isBrief || isSafe(false, faults), isSafe(true, faults),
                         isBrief || isSafe(false, lid),
                         notices(recordIsNotKept, "a store that forgets the record"),
                         notices(propertyAlwaysEnabled, "a property that tells wrong")};
    return std::ranges::find(good, false) != std::end(good) ? EXIT_FAILURE : EXIT_SUCCESS;
}
