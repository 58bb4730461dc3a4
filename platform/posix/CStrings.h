#pragma once

#include <string>
#include <utility>
#include <vector>

namespace velmo {

/// Texts as exec and its kin read them: an array of pointers with a null pointer after the last.
/// The texts must not contain NUL.
class CStrings {
public:
    explicit CStrings(std::vector<std::string> texts) : texts_(std::move(texts)) {
        pointers_.reserve(texts_.size() + 1);
        for (std::string& text : texts_)
            pointers_.push_back(text.data());
        pointers_.push_back(nullptr);
    }

    // A copy's pointers would lead into the original's texts.
    CStrings(const CStrings&) = delete;
    CStrings& operator=(const CStrings&) = delete;
    ~CStrings() = default;

    [[nodiscard]] char* const* get() const { return pointers_.data(); }

private:
    std::vector<std::string> texts_;
    std::vector<char*> pointers_;
};

} // namespace velmo
