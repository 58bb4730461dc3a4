#include "lab/emulated-mac/shims/Foundation.h"

#include "lab/emulated-mac/shims/Darwin.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <array>
#include <cstdio>

namespace velmo {

namespace {

constexpr std::uint64_t utf8Encoding = 4; // NSUTF8StringEncoding

/// Tells whether the text is UTF-8. If not, the initialiser returns nil and releases the object.
bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        if ((first >= 0x80 && first < 0xC2) || first > 0xF4 || i + size > text.size())
            return false;
        for (std::size_t k = 1; k < size; ++k) {
            if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80)
                return false;
        }
        i += size;
    }
    return true;
}

Object* initWithBytes(NSString* self, Selector /*selector*/, const char* bytes,
                      std::uint64_t length, std::uint64_t encoding) {
    if (encoding != utf8Encoding)
        endRun("a string encoding that is not UTF-8");
    if (!isUtf8({bytes, length})) {
        release(self);
        return nullptr;
    }
    self->text.assign(bytes, length);
    return self;
}

/// Returns a pointer that lives as long as the string, as the documentation says: for ever if the
/// string is constant.
const char* utf8Of(const Object* self, Selector /*selector*/) {
    if (self->isa == &constantString.object)
        return static_cast<const ConstantString*>(self)->text;
    return static_cast<const NSString*>(self)->text.c_str();
}

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wformat-nonliteral"

/// Formats by "String Format Specifiers": those of printf, and %@.
extern "C" Object* emulatedFormat(Object* /*self*/, Selector /*selector*/, const Object* format,
                                  void* stack) {
    const std::string pattern = textOf(format);
    if (pattern.find("%@") != std::string::npos)
        endRun("a string formatted from objects");
    VariadicList measured(stack);
    const int size = std::vsnprintf(nullptr, 0, pattern.c_str(), measured.get());
    std::string text(static_cast<std::size_t>(size), '\0');
    VariadicList written(stack);
    std::vsnprintf(text.data(), text.size() + 1, pattern.c_str(), written.get());
    return autorelease(stringOf(text));
}

#pragma clang diagnostic pop

VELMO_VARIADIC(variadicFormat, 3, emulatedFormat);

Object* processInfo(Object* /*self*/, Selector /*selector*/);

std::int64_t thermalState(Object* /*self*/, Selector /*selector*/) {
    return factOr("thermal", 0);
}

} // namespace

FrameworkClass nsString("NSString", &nsObject.object, sizeof(NSString),
                        {constructing<NSString>(), destructing<NSString>(),
                         method<initWithBytes>("initWithBytes:length:encoding:"),
                         method<utf8Of>("UTF8String")},
                        {method<variadicFormat>("stringWithFormat:")});

FrameworkClass constantString("__NSCFConstantString", &nsString.object, sizeof(ConstantString), {});

namespace {

FrameworkClass nsProcessInfo("NSProcessInfo", &nsObject.object, sizeof(Object),
                             {method<thermalState>("thermalState")},
                             {method<processInfo>("processInfo")});

Object sharedProcessInfo{&nsProcessInfo.object};

/// Returns the one shared object. The documentation does not say whether it comes autoreleased: a
/// caller has to be ready for that.
Object* processInfo(Object* /*self*/, Selector /*selector*/) {
    static const Object* const made = [] {
        makeImmortal(&sharedProcessInfo);
        return &sharedProcessInfo;
    }();
    static_cast<void>(made);
    return autorelease(retain(&sharedProcessInfo));
}

} // namespace

Object* stringOf(const std::string& text) {
    auto* const string = allocate<NSString>(nsString);
    string->text = text;
    return string;
}

bool isString(const Object* object) {
    return object->isa == &nsString.object || object->isa == &constantString.object;
}

std::string textOf(const Object* string) {
    if (string->isa == &nsString.object)
        return static_cast<const NSString*>(string)->text;
    const auto* const constant = static_cast<const ConstantString*>(string);
    return {constant->text, constant->length};
}

namespace {

constexpr auto shims = std::to_array<Shim>({
    {"_OBJC_CLASS_$_NSProcessInfo", classAddress<nsProcessInfo>},
    {"_OBJC_CLASS_$_NSString", classAddress<nsString>},
    {"___CFConstantStringClassReference", classAddress<constantString>},
});

} // namespace

Shims foundationShims() {
    return shims;
}

} // namespace velmo
