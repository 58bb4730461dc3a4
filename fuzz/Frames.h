#pragma once

#include "fuzz/Fuzz.h"
#include "lab/instruments/DecodeInSlices.h"

namespace velmo::Fuzz {

/// Decodes the rest of the input byte by byte and returns the outcome, which must be the same when
/// the stream is cut into slices, with frames that own their payloads and with views. The first
/// byte of the input gives the length of the slices. `told` turns a frame into something
/// comparable.
template<class Decoder, class Tell>
auto requireSlicingIsIgnored(Input& input, ByteView& stream, const Tell& told) {
    const std::size_t length = std::size_t{1} + input.byte();
    stream = input.restBytes();
    std::vector<std::size_t> cuts;
    for (std::size_t cut = length; cut < stream.size(); cut += length)
        cuts.push_back(cut);

    auto finest = decodeInSlices<Decoder>(stream, everyByte(stream));
    const auto sliced = decodeInSlices<Decoder>(stream, cuts);
    const auto viewed = decodeInSlices<ByViews<Decoder>>(stream, cuts);
    require(sliced.error == finest.error && sliced.buffered == finest.buffered);
    require(viewed.error == sliced.error && viewed.buffered == sliced.buffered
            && viewed.position == sliced.position
            && std::ranges::equal(viewed.frames, sliced.frames, {}, told, told));

    // The bytes before the one in error are decoded in one piece too.
    const std::size_t sound = finest.position - (finest.error ? 1 : 0);
    Decoder decoder;
    const auto whole = decoder.feed(stream.first(sound));
    require(whole && std::ranges::equal(*whole, finest.frames, {}, told, told));
    for (int i = 0; finest.error && i < 2; ++i) // an error is final
        require(decoder.feed(stream.subspan(sound)).error() == finest.error
                && decoder.buffered() == 0);
    return finest;
}

} // namespace velmo::Fuzz
