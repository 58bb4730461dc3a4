#include "platform/host/PropertyList.h"

#include "platform/host/PropertyListBounds.h"
#include "platform/host/PropertyListFile.h"
#include "platform/host/macos/CoreFoundationValue.h"
#include "platform/macos/CoreFoundation.h"

namespace velmo::PropertyList {

namespace {

const UInt8* bytesAt(std::string_view text) {
    return reinterpret_cast<const UInt8*>(text.data());
}

} // namespace

std::optional<Value> parse(std::string_view bytes) {
    if (!PropertyListBounds::admits(bytes))
        return std::nullopt;
    const Owned<CFDataRef> data(
        CFDataCreate(kCFAllocatorDefault, bytesAt(bytes), static_cast<CFIndex>(bytes.size())));
    if (!data)
        return std::nullopt;
    const Owned<CFPropertyListRef> list(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
    return valueIn(list.get());
}

Inventory::BundleInformation bundle(const std::string& path) {
    // Checked first: CFBundle, which reads the file again, would wait for a FIFO and read anything.
    const auto file = readInformation(path);
    if (!file || !PropertyListBounds::admits(file->content))
        return {};
    const Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, bytesAt(file->bundle), static_cast<CFIndex>(file->bundle.size()),
        Boolean{1}));
    if (!url)
        return {};
    const Owned<CFBundleRef> found(CFBundleCreate(kCFAllocatorDefault, url.get()));
    if (!found)
        return {};
    const auto text = [&](CFStringRef key) {
        return textIn(CFBundleGetValueForInfoDictionaryKey(found.get(), key));
    };
    return {.displayName = text(CFSTR("CFBundleDisplayName")),
            .name = text(CFSTR("CFBundleName")),
            .version = text(CFSTR("CFBundleShortVersionString")),
            .identifier = textIn(CFBundleGetIdentifier(found.get()))};
}

} // namespace velmo::PropertyList
