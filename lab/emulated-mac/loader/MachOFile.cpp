#include "lab/emulated-mac/loader/MachOFile.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace velmo {

namespace {

// <mach-o/loader.h>
constexpr std::uint32_t magic64 = 0xFEEDFACF;
constexpr std::uint32_t processorArm64 = 0x0100000C;
constexpr std::size_t headerSize = 32;
constexpr std::uint32_t commandSegment64 = 0x19;
constexpr std::uint32_t commandDyldInfo = 0x22;
constexpr std::uint32_t commandDyldInfoOnly = 0x80000022;
constexpr std::uint32_t commandMain = 0x80000028;
constexpr std::uint32_t commandChainedFixups = 0x80000034;
constexpr std::size_t segmentSize = 72;
constexpr std::size_t sectionSize = 80;
constexpr std::size_t nameSize = 16;

enum BindOpcode : std::uint8_t {
    done = 0x00,
    setLibraryImmediate = 0x10,
    setLibraryUleb = 0x20,
    setLibrarySpecial = 0x30,
    setSymbol = 0x40,
    setType = 0x50,
    setAddend = 0x60,
    setSegmentAndOffset = 0x70,
    addAddress = 0x80,
    doBind = 0x90,
    doBindAddAddress = 0xA0,
    doBindAddScaled = 0xB0,
    doBindTimesSkipping = 0xC0,
};

class OpcodeReader {
public:
    OpcodeReader(const std::uint8_t* begin, const std::uint8_t* end) : at_(begin), end_(end) {}

    [[nodiscard]] bool isAtEnd() const { return at_ == end_; }

    std::uint8_t byte() {
        if (at_ == end_)
            throw std::runtime_error("the bind opcodes end in the middle of one");
        return *at_++;
    }

    std::uint64_t uleb() { return leb().value; }

    std::int64_t sleb() {
        const auto [value, bits, last] = leb();
        const std::uint64_t sign = (last & 0x40) != 0 && bits < 64 ? ~std::uint64_t{0} << bits : 0;
        return static_cast<std::int64_t>(value | sign);
    }

    std::string_view text() {
        const auto* const begin = at_;
        while (byte() != 0) {
        }
        return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(at_ - begin - 1)};
    }

private:
    struct Leb {
        std::uint64_t value;
        unsigned bits;
        std::uint8_t last;
    };

    Leb leb() {
        Leb read{0, 0, 0x80};
        while ((read.last & 0x80) != 0 && read.bits < 64) {
            read.last = byte();
            read.value |= static_cast<std::uint64_t>(read.last & 0x7F) << read.bits;
            read.bits += 7;
        }
        return read;
    }

    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

} // namespace

MachOFile::MachOFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), {});
    if (at<std::uint32_t>(0) != magic64 || at<std::uint32_t>(4) != processorArm64)
        throw std::runtime_error(path + " is no Mach-O file for arm64");
    std::size_t offset = headerSize;
    for (auto left = at<std::uint32_t>(16); left > 0; --left) {
        readCommand(at<std::uint32_t>(offset), offset);
        offset += at<std::uint32_t>(offset + 4);
    }
}

template<class T>
T MachOFile::at(std::size_t offset) const {
    if (offset + sizeof(T) > bytes_.size())
        throw std::runtime_error("the file ends too early");
    T value;
    std::memcpy(&value, bytes_.data() + offset, sizeof value);
    return value;
}

void MachOFile::readCommand(std::uint32_t command, std::size_t offset) {
    switch (command) {
    case commandSegment64:
        readSegment(offset);
        break;
    case commandDyldInfo:
    case commandDyldInfoOnly:
        binds_ = {at<std::uint32_t>(offset + 16), at<std::uint32_t>(offset + 20)};
        lazyBinds_ = {at<std::uint32_t>(offset + 32), at<std::uint32_t>(offset + 36)};
        break;
    case commandMain:
        entry_ = segments_.at(1).address + at<std::uint64_t>(offset + 8);
        break;
    case commandChainedFixups:
        throw std::runtime_error("the file has chained fixups: Apple's linker wrote it");
    default:
        break;
    }
}

void MachOFile::readSegment(std::size_t offset) {
    const auto name = [this](std::size_t at) {
        const auto* const text = reinterpret_cast<const char*>(bytes_.data() + at);
        return std::string(text, strnlen(text, nameSize));
    };
    segments_.push_back({.name = name(offset + 8),
                         .address = at<std::uint64_t>(offset + 24),
                         .size = at<std::uint64_t>(offset + 32),
                         .offset = at<std::uint64_t>(offset + 40),
                         .fileSize = at<std::uint64_t>(offset + 48)});
    const auto count = at<std::uint32_t>(offset + 64);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t section = offset + segmentSize + sectionSize * i;
        sections_.push_back({.name = name(section),
                             .address = at<std::uint64_t>(section + 32),
                             .size = at<std::uint64_t>(section + 40),
                             .kind = at<std::uint8_t>(section + 64)});
    }
}

MachOFile::Section MachOFile::section(std::string_view name) const {
    for (const Section& section : sections_) {
        if (section.name == name)
            return section;
    }
    return {};
}

const std::uint8_t* MachOFile::bytesOf(const Segment& segment) const {
    if (segment.offset + segment.fileSize > bytes_.size())
        throw std::runtime_error("the file ends too early");
    return bytes_.data() + segment.offset;
}

std::vector<MachOFile::Bind> MachOFile::binds() const {
    std::vector<Bind> binds;
    readBinds(binds_, false, binds);
    readBinds(lazyBinds_, true, binds);
    return binds;
}

void MachOFile::readBinds(Opcodes opcodes, bool areLazy, std::vector<Bind>& binds) const {
    if (std::size_t{opcodes.offset} + opcodes.size > bytes_.size())
        throw std::runtime_error("the file ends too early");
    const auto* const begin = bytes_.data() + opcodes.offset;
    OpcodeReader reader(begin, begin + opcodes.size);
    Bind next{.isLazy = areLazy};
    const auto bind = [&](std::uint64_t skipped) {
        binds.push_back(next);
        next.address += sizeof(std::uint64_t) + skipped;
    };
    while (!reader.isAtEnd()) {
        const std::uint8_t opcode = reader.byte();
        const std::uint8_t immediate = opcode & 0x0F;
        switch (opcode & 0xF0) {
        case done: // between lazy ones, too
        case setLibraryImmediate:
        case setLibrarySpecial:
        case setType:
            break;
        case setLibraryUleb:
            reader.uleb();
            break;
        case setSymbol:
            next.symbol = reader.text();
            break;
        case setAddend:
            next.addend = reader.sleb();
            break;
        case setSegmentAndOffset:
            next.address = segments_.at(immediate).address + reader.uleb();
            break;
        case addAddress:
            next.address += reader.uleb();
            break;
        case doBind:
            bind(0);
            break;
        case doBindAddAddress:
            bind(reader.uleb());
            break;
        case doBindAddScaled:
            bind(immediate * sizeof(std::uint64_t));
            break;
        case doBindTimesSkipping: {
            auto count = reader.uleb();
            for (const auto skipped = reader.uleb(); count > 0; --count)
                bind(skipped);
            break;
        }
        default:
            throw std::runtime_error("an unknown bind opcode");
        }
    }
}

} // namespace velmo
