#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmo {

/// A 64-bit Mach-O executable for arm64 as a file (<mach-o/loader.h>), in the form that the cross
/// linker writes: pointers are stored as addresses, and dyld-info opcodes name the imports. Chained
/// fixups, which Apple's own linker writes, are refused.
class MachOFile {
public:
    struct Segment {
        std::string name;
        std::uint64_t address = 0;
        std::uint64_t size = 0;
        std::uint64_t offset = 0;
        std::uint64_t fileSize = 0;
    };

    struct Section {
        std::string name;
        std::uint64_t address = 0;
        std::uint64_t size = 0;
        std::uint8_t kind = 0;
    };

    /// A place that the loader fills with the address of an import, and what is added to it.
    struct Bind {
        std::string_view symbol;
        std::uint64_t address = 0;
        std::int64_t addend = 0;
        bool isLazy = false; ///< a function, bound by its first call
    };

    /// Throws std::runtime_error for a file that can't be read or has another form.
    explicit MachOFile(const std::string& path);

    [[nodiscard]] const std::vector<Segment>& segments() const { return segments_; }

    [[nodiscard]] const std::vector<Section>& sections() const { return sections_; }

    /// Returns the section of this name; of size 0 if the file lacks it.
    [[nodiscard]] Section section(std::string_view name) const;

    [[nodiscard]] const std::uint8_t* bytesOf(const Segment& segment) const;

    /// Returns the address of `main`.
    [[nodiscard]] std::uint64_t entry() const { return entry_; }

    /// Returns every bind. The symbols live as long as this object.
    [[nodiscard]] std::vector<Bind> binds() const;

private:
    struct Opcodes {
        std::uint32_t offset = 0;
        std::uint32_t size = 0;
    };

    template<class T>
    [[nodiscard]] T at(std::size_t offset) const;
    void readCommand(std::uint32_t command, std::size_t offset);
    void readSegment(std::size_t offset);
    void readBinds(Opcodes opcodes, bool areLazy, std::vector<Bind>& binds) const;

    std::vector<std::uint8_t> bytes_;
    std::vector<Segment> segments_;
    std::vector<Section> sections_;
    Opcodes binds_;
    Opcodes lazyBinds_;
    std::uint64_t entry_ = 0;
};

} // namespace velmo
