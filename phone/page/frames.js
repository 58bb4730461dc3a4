// The frames of a terminal session, as docs/formats/pty-frames.md has them.

export const Kind = { data: 1, resize: 2, exit: 3, signal: 4, ready: 5 };

const headerBytes = 5;
const maxPayload = 65536;

function frame(kind, payload) {
    const bytes = new Uint8Array(headerBytes + payload.length);
    bytes[0] = kind;
    new DataView(bytes.buffer).setUint32(1, payload.length);
    bytes.set(payload, headerBytes);
    return bytes;
}

/** Returns the frames for a typed text. */
export function framesOfText(text) {
    return dataFrames(new TextEncoder().encode(text));
}

/** Returns the frames for bytes that a text has as its characters, as some programs want the mouse's place. */
export function framesOfBytes(characters) {
    return dataFrames(Uint8Array.from(characters, (character) => character.charCodeAt(0)));
}

/** Returns a frame for each piece of what was typed that a frame can carry. */
export function dataFrames(bytes) {
    const frames = [];
    for (let at = 0; at < bytes.length; at += maxPayload)
        frames.push(frame(Kind.data, bytes.subarray(at, at + maxPayload)));
    return frames;
}

export function resizeFrame(cols, rows) {
    const payload = new Uint8Array(4);
    new DataView(payload.buffer).setUint16(0, cols);
    new DataView(payload.buffer).setUint16(2, rows);
    return frame(Kind.resize, payload);
}

/**
 * Takes a stream of frames that may be cut anywhere, and hands on the content of data frames as it
 * comes, without waiting for the end of a frame. `onData(bytes)`, `onExit(code)`.
 */
export class FrameReader {
    #header = new Uint8Array(headerBytes);
    #headerLength = 0;
    #left = 0;
    #payload = [];
    #onData;
    #onExit;

    constructor(onData, onExit) {
        this.#onData = onData;
        this.#onExit = onExit;
    }

    read(bytes) {
        let at = 0;
        while (at < bytes.length) {
            if (this.#headerLength < headerBytes) {
                this.#header[this.#headerLength++] = bytes[at++];
                if (this.#headerLength === headerBytes) {
                    this.#left = new DataView(this.#header.buffer).getUint32(1);
                    this.#payload = [];
                    this.#finishIfWhole();
                }
                continue;
            }
            const piece = bytes.subarray(at, at + this.#left);
            at += piece.length;
            this.#left -= piece.length;
            if (this.#header[0] === Kind.data)
                this.#onData(piece);
            else
                this.#payload.push(...piece);
            this.#finishIfWhole();
        }
    }

    #finishIfWhole() {
        if (this.#left > 0)
            return;
        this.#headerLength = 0;
        if (this.#header[0] === Kind.exit)
            this.#onExit(new DataView(new Uint8Array(this.#payload).buffer).getInt32(0));
    }
}
