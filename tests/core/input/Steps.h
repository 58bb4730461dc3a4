#pragma once

#include "core/input/KeyPhase.h"

#include <string>
#include <vector>

namespace velmo {

/// " +21:cs" is key 21 going down while cmd and shift are down, by their first letters.
inline std::string speltSteps(const std::vector<KeyPhase::Step>& steps) {
    std::string text;
    for (const KeyPhase::Step& step : steps) {
        text += (step.down ? " +" : " -") + std::to_string(step.code) + ":";
        for (const HotkeyModifier modifier : step.held)
            text += rawText(modifier)[0];
    }
    return text;
}

} // namespace velmo
