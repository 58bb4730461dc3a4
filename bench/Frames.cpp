#include "bench/Suite.h"
#include "core/terminal/FrameHeader.h"
#include "core/terminal/PtyFrame.h"

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/delimited_message_util.h>
#include <google/protobuf/wrappers.pb.h>
#include <wslay/wslay.h>

#include <cstring>
#include <memory>
#include <span>

namespace velmo::bench {

namespace {

constexpr std::size_t total = std::size_t{64} << 20;    ///< bytes of payload
constexpr std::size_t readSize = std::size_t{16} << 10; ///< bytes that a decoder gets at a time

Bytes terminalOutput(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(' ' + (i * 7 + i / 80) % 95);
    return bytes;
}

Bytes repeated(const Bytes& one, std::size_t times) {
    Bytes all;
    all.reserve(times * one.size());
    for (std::size_t i = 0; i < times; ++i)
        all.insert(all.end(), one.begin(), one.end());
    return all;
}

Bytes ptyStream(std::size_t frames, std::size_t payload) {
    return repeated(PtyFrame::encode(PtyFrame::Kind::data, terminalOutput(payload)).value(),
                    frames);
}

template<class Use>
void inReads(ByteView stream, Use use) {
    while (!stream.empty()) {
        const ByteView piece = stream.first(std::min(readSize, stream.size()));
        use(piece);
        stream = stream.subspan(piece.size());
    }
}

void feed(PtyFrame::Decoder& decoder, const Bytes& stream) {
    inReads(stream, [&](ByteView piece) {
        const auto fed = decoder.feed(
            piece, [](const PtyFrame::FrameView& frame) { use(frame.payload.data()); });
        use(fed.has_value());
    });
}

void decodeViews(benchmark::State& state, const Bytes& stream) {
    for (auto _ : state) {
        PtyFrame::Decoder decoder;
        feed(decoder, stream);
    }
}

void decodeOwned(benchmark::State& state, const Bytes& stream) {
    for (auto _ : state) {
        PtyFrame::Decoder decoder;
        inReads(stream, [&](ByteView piece) { use(decoder.feed(piece).value()); });
    }
}

/// Goes from header to header of a stream that lies in memory as a whole, and checks nothing.
void scanHeaders(benchmark::State& state, const Bytes& stream) {
    for (auto _ : state) {
        for (ByteView rest = stream; !rest.empty();) {
            const std::size_t length = FrameHeader::read(rest).length;
            use(rest.data());
            rest = rest.subspan(FrameHeader::bytes + length);
        }
    }
}

void copy(benchmark::State& state, const Bytes& stream) {
    Bytes target(readSize);
    for (auto _ : state) {
        inReads(stream, [&](ByteView piece) {
            std::memcpy(target.data(), piece.data(), piece.size());
            benchmark::ClobberMemory();
        });
    }
}

/// Returns unmasked WebSocket frames, as a server sends them, with payloads as large as ours.
Bytes webSocketStream(std::size_t frames, std::size_t payload) {
    Bytes one{0x82}; // final, binary
    if (payload < 126) {
        one.push_back(static_cast<std::uint8_t>(payload));
    } else {
        one.push_back(127);
        for (int shift = 56; shift >= 0; shift -= 8)
            one.push_back(static_cast<std::uint8_t>(payload >> shift));
    }
    const Bytes content = terminalOutput(payload);
    one.insert(one.end(), content.begin(), content.end());
    return repeated(one, frames);
}

struct WebSocketReader {
    ByteView left;
    std::size_t received = 0;

    static ssize_t read(wslay_event_context_ptr context, std::uint8_t* buffer, std::size_t length,
                        int, void* user) {
        auto& reader = *static_cast<WebSocketReader*>(user);
        const std::size_t count = std::min({length, readSize, reader.left.size()});
        if (count == 0) {
            wslay_event_set_error(context, WSLAY_ERR_WOULDBLOCK);
            return -1;
        }
        std::memcpy(buffer, reader.left.data(), count);
        reader.left = reader.left.subspan(count);
        return static_cast<ssize_t>(count);
    }

    static void receive(wslay_event_context_ptr, const wslay_event_on_msg_recv_arg* message,
                        void* user) {
        static_cast<WebSocketReader*>(user)->received += message->msg_length;
    }
};

void decodeWebSocket(benchmark::State& state, const Bytes& stream, std::size_t payloadBytes) {
    wslay_event_callbacks callbacks{};
    callbacks.recv_callback = &WebSocketReader::read;
    callbacks.on_msg_recv_callback = &WebSocketReader::receive;
    for (auto _ : state) {
        WebSocketReader reader{.left = stream};
        wslay_event_context_ptr context = nullptr;
        wslay_event_context_client_init(&context, &callbacks, &reader);
        wslay_event_recv(context);
        wslay_event_context_free(context);
        if (reader.received != payloadBytes)
            state.SkipWithError("wslay lost something");
    }
}

Bytes protobufStream(std::size_t frames, std::size_t payload) {
    google::protobuf::BytesValue message;
    message.set_value(std::string(textOf(terminalOutput(payload))));
    std::string one;
    {
        google::protobuf::io::StringOutputStream out(&one);
        google::protobuf::util::SerializeDelimitedToZeroCopyStream(message, &out);
    }
    return repeated(Bytes(one.begin(), one.end()), frames);
}

void decodeProtobuf(benchmark::State& state, const Bytes& stream) {
    for (auto _ : state) {
        google::protobuf::io::ArrayInputStream in(stream.data(), static_cast<int>(stream.size()),
                                                  static_cast<int>(readSize));
        bool ended = false;
        while (!ended) {
            google::protobuf::BytesValue message;
            if (!google::protobuf::util::ParseDelimitedFromZeroCopyStream(&message, &in, &ended)
                && !ended)
                state.SkipWithError("protobuf refuses its own");
            use(message);
        }
    }
}

void compareDecoding(Suite& suite, std::size_t payload, const std::string& input,
                     void (*decode)(benchmark::State&, const Bytes&), std::vector<Aim> aims) {
    const std::size_t frames = total / payload;
    const auto stream = std::make_shared<const Bytes>(ptyStream(frames, payload));
    const auto webSocket = std::make_shared<const Bytes>(webSocketStream(frames, payload));
    const auto protobuf = std::make_shared<const Bytes>(protobufStream(frames, payload));
    suite.compare(
        {.what = "PtyFrame::Decoder.feed, " + input,
         .input = "64 MiB in 16 KiB reads",
         .aims = std::move(aims)},
        {{ours, [=](auto& state) { decode(state, *stream); }},
         {"memcpy", [=](auto& state) { copy(state, *stream); }},
         {"a scan of headers", [=](auto& state) { scanHeaders(state, *stream); }},
         {"wslay", [=](auto& state) { decodeWebSocket(state, *webSocket, frames * payload); }},
         {"protobuf", [=](auto& state) { decodeProtobuf(state, *protobuf); }}});
}

void compareFraming(Suite& suite) {
    const auto bytes = std::make_shared<const Bytes>(terminalOutput(total));
    suite.compare({.what = "PtyFrame::data",
                   .input = "64 MiB into new memory",
                   .aims = {{.contender = "memcpy", .factor = 0.9, .doesLess = "copies only"}}},
                  {{ours,
                    [=](auto& state) {
                        for (auto _ : state)
                            use(PtyFrame::data(*bytes));
                    }},
                   {"memcpy", [=](auto& state) {
                        for (auto _ : state) {
                            const auto target =
                                std::make_unique_for_overwrite<std::uint8_t[]>(bytes->size());
                            std::memcpy(target.get(), bytes->data(), bytes->size());
                            use(target[bytes->size() / 2]);
                        }
                    }}});
}

/// Takes a key to the program and the echo back. Key and echo are framed, decoded and looked at.
void echoOurs(benchmark::State& state) {
    PtyFrame::Decoder program;
    PtyFrame::Decoder viewer;
    const Bytes key{'k'};
    for (auto _ : state) {
        Bytes echo;
        const auto there = program.feed(PtyFrame::data(key), [&](const PtyFrame::FrameView& frame) {
            echo = PtyFrame::data(frame.payload);
        });
        const auto back =
            viewer.feed(echo, [](const PtyFrame::FrameView& frame) { use(frame.payload.front()); });
        if (!there || !back)
            state.SkipWithError("a frame was refused");
    }
}

void echoProtobuf(benchmark::State& state) {
    const auto framed = [](const std::string& bytes) {
        google::protobuf::BytesValue message;
        message.set_value(bytes);
        std::string one;
        google::protobuf::io::StringOutputStream out(&one);
        google::protobuf::util::SerializeDelimitedToZeroCopyStream(message, &out);
        return one;
    };
    const auto decoded = [](const std::string& stream) {
        google::protobuf::io::ArrayInputStream in(stream.data(), static_cast<int>(stream.size()));
        google::protobuf::BytesValue message;
        bool ended = false;
        google::protobuf::util::ParseDelimitedFromZeroCopyStream(&message, &in, &ended);
        return message.value();
    };
    for (auto _ : state)
        use(decoded(framed(decoded(framed("k")))));
}

} // namespace

void addEcho(Suite& suite) {
    suite.compare({.what = "a key and its echo, framed and decoded",
                   .input = "1 byte each way, without a transport",
                   .aims = {{.contender = "protobuf", .factor = 1}}},
                  {{ours, echoOurs}, {"protobuf", echoProtobuf}});
}

void addFrames(Suite& suite) {
    const Aim memory{.contender = "memcpy", .factor = 0.5, .doesLess = "copies only"};
    compareDecoding(
        suite, PtyFrame::maxPayload, "views of 64 KiB frames", decodeViews,
        {memory, {.contender = "wslay", .factor = 1}, {.contender = "protobuf", .factor = 1}});
    compareDecoding(
        suite, 32, "views of 32-byte frames", decodeViews,
        {{.contender = "a scan of headers", .factor = 0.5, .doesLess = "judges nothing"},
         {.contender = "wslay", .factor = 4},
         {.contender = "protobuf", .factor = 4}});
    compareDecoding(suite, 32, "lists of 32-byte frames", decodeOwned,
                    {{.contender = "wslay", .factor = 1}, {.contender = "protobuf", .factor = 1}});
    compareFraming(suite);
    suite.grow({.what = "PtyFrame::Decoder.feed",
                .unit = "frames of 1 KiB",
                .sizes = {1 << 8, 1 << 10, 1 << 12, 1 << 14}},
               [](benchmark::State& state) {
                   // A few frames are decoded again and again, so that they stay in the cache: what
                   // grows is the decoder's work alone.
                   const std::size_t few = 64;
                   const Bytes stream = ptyStream(few, 1024);
                   for (auto _ : state) {
                       PtyFrame::Decoder decoder;
                       for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(0)) / few;
                            ++i)
                           feed(decoder, stream);
                   }
               });
}

} // namespace velmo::bench
