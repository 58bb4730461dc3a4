/// Sends the clipboard's content to the phone whenever it has changed, and puts on the clipboard
/// what the phone sends. The pasteboard is a stub; on a Mac it is asked every
/// `PasteboardPolicy::watchIntervalSeconds`.

#include "core/clipboard/ClipboardReply.h"
#include "core/clipboard/ClipboardWatchLine.h"
#include "core/clipboard/ClipboardWrite.h"
#include "core/output/Output.h"

#include <iostream>

using namespace velmo;

namespace {

/// The content that NSPasteboard shows: the types in its order, and the data of one type.
struct Pasteboard {
    std::int64_t changeCount = 0;
    std::vector<std::string> types;
    std::string data; ///< TIFF is turned into PNG before
};

ClipboardReply content(const Pasteboard& now) {
    if (PasteboardPolicy::isPrivate(now.types))
        return ClipboardReply::ofConcealed();
    switch (PasteboardPolicy::pick(now.types)) {
    case PasteboardPolicy::Content::text:
        if (now.data.empty())
            break;
        return PasteboardPolicy::textFits(now.data)
                   ? ClipboardReply::ofText(now.data, now.changeCount)
                   : ClipboardReply::ofTooLarge(now.changeCount);
    case PasteboardPolicy::Content::png:
    case PasteboardPolicy::Content::tiff:
        if (now.data.size() > PasteboardPolicy::imageMaxBytes
            || !PasteboardPolicy::pngDimensionsOK(bytesOf(now.data)))
            return ClipboardReply::ofTooLarge(now.changeCount);
        return ClipboardReply::ofImage(bytesOf(now.data), now.changeCount);
    case PasteboardPolicy::Content::none:
        break;
    }
    return ClipboardReply::ofEmpty(now.changeCount);
}

void write(std::string_view body) {
    const auto asked = ClipboardWrite::parse(bytesOf(body));
    if (!asked)
        std::cout << "refused\n";
    else if (const auto* text = std::get_if<ClipboardWrite::Text>(&asked->content))
        std::cout << "put a text of " << text->text.size() << " bytes\n";
    else if (std::holds_alternative<ClipboardWrite::ConcealedText>(asked->content))
        std::cout << "put a text, and the type " << PasteboardPolicy::concealedTypes.front()
                  << '\n';
    else
        std::cout << "put an image\n";
}

} // namespace

int main() {
    const Pasteboard looks[] = {
        {.changeCount = 41, .types = {"public.html", "public.utf8-plain-text"}, .data = "hello"},
        {.changeCount = 41},
        {.changeCount = 42,
         .types = {"public.utf8-plain-text", "org.nspasteboard.ConcealedType"},
         .data = "hunter2"}};
    const auto send = [](std::string_view line) { std::cout << line; };
    std::int64_t seen = 0;
    for (const Pasteboard& now : looks) {
        if (std::exchange(seen, now.changeCount) == now.changeCount)
            continue;
        Output::print(ClipboardWatchLine::of(now.changeCount, now.types), send);
        Output::print(content(now).reporting(now.types), send); // when the phone asks for it
    }
    write(R"({"text":"from the phone"})");
    write(R"({"text":"secret","concealed":true})");
    write(R"({"text":""})");
}
