"""Reads what the checks need from 64-bit Mach-O files and archives of them, as the cross linker
writes them. Pointers must stand in the file as addresses: files with chained fixups, which Apple's
own linker writes, are not for this reader."""

import hashlib
import struct
from dataclasses import dataclass, field

ARM64 = 0x0100000C
EXECUTABLE = 2
OBJECT = 1
MACOS = 1

LC_SEGMENT_64 = 0x19
LC_SYMTAB = 0x2
LC_BUILD_VERSION = 0x32
LC_VERSION_MIN_MACOSX = 0x24
LC_CODE_SIGNATURE = 0x1D
LC_CHAINED_FIXUPS = 0x80000034
DYLIB_COMMANDS = {
    0xC: "LC_LOAD_DYLIB",
    0x80000018: "LC_LOAD_WEAK_DYLIB",
    0x8000001F: "LC_REEXPORT_DYLIB",
    0x80000023: "LC_LOAD_UPWARD_DYLIB",
    0x20: "LC_LAZY_LOAD_DYLIB",
}
LC_RPATH = 0x8000001C

SG_READ_ONLY = 0x10
SEGMENT_FLAGS_AT = 68  # of a segment's load command

N_STAB = 0xE0
N_TYPE = 0x0E
N_SECT = 0x0E
N_EXT = 0x01


CODE_DIRECTORY = 0xFADE0C02
SHA_256 = 2


class Malformed(Exception):
    pass


@dataclass
class Segment:
    name: str
    command: int  # offset of its load command
    flags: int
    address: int
    offset: int
    size: int


@dataclass
class MachO:
    data: bytes
    cpu: int = 0
    kind: int = 0
    libraries: list = field(default_factory=list)
    search_paths: list = field(default_factory=list)
    segments: list = field(default_factory=list)
    sections: dict = field(default_factory=dict)  # name: (address, size)
    platform: int = 0
    minimum_system: tuple = ()
    signature: int = 0  # offset of the code signature
    undefined: list = field(default_factory=list)  # (name, ordinal of the library from 1)
    defined: set = field(default_factory=set)  # external and other named symbols of sections
    exported: set = field(default_factory=set)  # of an object: what other objects may use

    def __post_init__(self):
        magic, self.cpu, _, self.kind, count, _, _, _ = struct.unpack_from("<8I", self.data)
        if magic != 0xFEEDFACF:
            raise Malformed("no 64-bit Mach-O file")
        offset = 32
        for _ in range(count):
            command, size = struct.unpack_from("<2I", self.data, offset)
            self._read_command(command, offset)
            offset += size

    def _read_command(self, command, offset):
        if command == LC_SEGMENT_64:
            self._read_segment(offset)
        elif command == LC_SYMTAB:
            self._read_symbols(*struct.unpack_from("<4I", self.data, offset + 8))
        elif command in DYLIB_COMMANDS:
            self.libraries.append(self._text(offset + self._u32(offset + 8)))
        elif command == LC_RPATH:
            self.search_paths.append(self._text(offset + self._u32(offset + 8)))
        elif command == LC_BUILD_VERSION:
            self.platform = self._u32(offset + 8)
            version = self._u32(offset + 12)
            self.minimum_system = (version >> 16, version >> 8 & 0xFF, version & 0xFF)
        elif command == LC_VERSION_MIN_MACOSX:
            self.platform = MACOS
            version = self._u32(offset + 8)
            self.minimum_system = (version >> 16, version >> 8 & 0xFF, version & 0xFF)
        elif command == LC_CODE_SIGNATURE:
            self.signature = self._u32(offset + 8)
        elif command == LC_CHAINED_FIXUPS:
            raise Malformed("pointers are chained fixups; only the cross linker's files are read")

    def _read_segment(self, offset):
        address, _, file_offset, file_size = struct.unpack_from("<4Q", self.data, offset + 24)
        name = self._name(offset + 8)
        flags = self._u32(offset + SEGMENT_FLAGS_AT)
        self.segments.append(Segment(name, offset, flags, address, file_offset, file_size))
        for index in range(self._u32(offset + 64)):
            section = offset + 72 + 80 * index
            self.sections[self._name(section)] = struct.unpack_from("<2Q", self.data, section + 32)

    def _read_symbols(self, offset, count, strings, _):
        for index in range(count):
            name, kind, _, description, _ = struct.unpack_from(
                "<IBBHQ", self.data, offset + 16 * index
            )
            if kind & N_STAB:
                continue
            text = self._text(strings + name)
            if kind & N_TYPE == N_SECT:
                self.defined.add(text)
                if kind & N_EXT:
                    self.exported.add(text)
            elif kind & N_TYPE == 0:
                self.undefined.append((text, description >> 8))

    def _u32(self, offset):
        return struct.unpack_from("<I", self.data, offset)[0]

    def _text(self, offset):
        return self.data[offset : self.data.index(b"\0", offset)].decode()

    def _name(self, offset):
        return self.data[offset : offset + 16].rstrip(b"\0").decode()

    def page_hashes(self):
        """Offset of the hash that the signature has of each page, and the hash of the page itself."""
        count = struct.unpack_from(">I", self.data, self.signature + 8)[0] if self.signature else 0
        for index in range(count):
            blob = self.signature + struct.unpack_from(">I", self.data, self.signature + 16 + 8 * index)[0]
            if struct.unpack_from(">I", self.data, blob)[0] != CODE_DIRECTORY:
                continue
            at, _, _, pages, limit = struct.unpack_from(">5I", self.data, blob + 16)
            size, kind, _, page_bits = struct.unpack_from(">4B", self.data, blob + 36)
            if (size, kind) != (32, SHA_256):
                raise Malformed("the signature's hashes are not SHA-256")
            for page in range(pages):
                content = self.data[page << page_bits : min((page + 1) << page_bits, limit)]
                yield blob + at + size * page, hashlib.sha256(content).digest()

    def signature_is_sound(self):
        return self.signature > 0 and all(self.data[at : at + len(digest)] == digest
                                          for at, digest in self.page_hashes())

    def offset_of(self, address):
        for segment in self.segments:
            if segment.address <= address < segment.address + segment.size:
                return segment.offset + address - segment.address
        raise Malformed(f"no bytes at {address:#x}")

    def u32_at(self, address):
        return self._u32(self.offset_of(address))

    def pointer_at(self, address):
        return struct.unpack_from("<Q", self.data, self.offset_of(address))[0]

    def text_at(self, address):
        return self._text(self.offset_of(address))

    def pointers_in(self, section):
        address, size = self.sections.get(section, (0, 0))
        return [self.pointer_at(address + at) for at in range(0, size, 8)]

    def undefined_by_library(self):
        by_library = {library: [] for library in self.libraries}
        for name, ordinal in self.undefined:
            by_library[self.libraries[ordinal - 1]].append(name)
        return {library: sorted(names) for library, names in by_library.items()}


@dataclass
class Protocol:
    name: str
    methods: dict  # selector: type encoding
    extended: dict  # selector: extended type encoding
    others: int  # class methods and optional ones


@dataclass
class Class:
    name: str
    methods: dict
    protocols: list


def methods_at(file, address):
    if address == 0:
        return {}
    size, count = file.u32_at(address) & 0xFFFC, file.u32_at(address + 4)
    entries = [address + 8 + size * index for index in range(count)]
    return {
        file.text_at(file.pointer_at(entry)): file.text_at(file.pointer_at(entry + 8))
        for entry in entries
    }


def protocol_at(file, address):
    required = methods_at(file, file.pointer_at(address + 24))
    others = [file.pointer_at(address + at) for at in (32, 40, 48)]
    types = file.pointer_at(address + 72)
    extended = {
        selector: file.text_at(file.pointer_at(types + 8 * index))
        for index, selector in enumerate(required)
    }
    return Protocol(
        file.text_at(file.pointer_at(address + 8)),
        required,
        extended,
        sum(len(methods_at(file, other)) for other in others),
    )


def protocols_of(file):
    """Every definition once, by address: the list may name one twice."""
    return [protocol_at(file, address) for address in sorted(set(file.pointers_in("__objc_protolist")))]


def class_at(file, address):
    facts = file.pointer_at(address + 32) & ~0x7
    protocols = file.pointer_at(facts + 40)
    count = file.pointer_at(protocols) if protocols else 0
    return Class(
        file.text_at(file.pointer_at(facts + 24)),
        methods_at(file, file.pointer_at(facts + 32)),
        [
            protocol_at(file, file.pointer_at(protocols + 8 + 8 * index)).name
            for index in range(count)
        ],
    )


def classes_of(file):
    return [class_at(file, address) for address in file.pointers_in("__objc_classlist")]


def objects_of(archive):
    """The object files of a BSD archive."""
    if archive[:8] != b"!<arch>\n":
        raise Malformed("no archive")
    offset = 8
    while offset + 60 <= len(archive):
        name = archive[offset : offset + 16].decode().strip()
        size = int(archive[offset + 48 : offset + 58])
        start = offset + 60
        skipped = int(name[3:]) if name.startswith("#1/") else 0
        content = archive[start + skipped : start + size]
        if content[:4] == b"\xcf\xfa\xed\xfe":
            yield MachO(content)
        offset = start + size + size % 2
