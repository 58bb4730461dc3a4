// Draws the icon as a PNG image of any size: a prompt on a blue ground, as icon.svg has it.
import { deflateSync } from "node:zlib";

const ground = [0x1f, 0x5f, 0xbf];
const strokes = [[16, 20, 30, 32], [30, 32, 16, 44], [34, 45, 48, 45]]; // of a square of 64
const halfWidth = 3;

/** The distance of a point from a stroke. */
function distance(x, y, [x1, y1, x2, y2]) {
    const [dx, dy] = [x2 - x1, y2 - y1];
    const along = Math.min(1, Math.max(0, ((x - x1) * dx + (y - y1) * dy) / (dx * dx + dy * dy)));
    return Math.hypot(x - x1 - along * dx, y - y1 - along * dy);
}

/** The checksum of a chunk, bit by bit. */
function crc32(bytes) {
    let crc = 0xffffffff;
    for (const byte of bytes) {
        crc ^= byte;
        for (let bit = 0; bit < 8; ++bit)
            crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
    }
    return (crc ^ 0xffffffff) >>> 0;
}

function chunk(name, data) {
    const body = Buffer.concat([Buffer.from(name, "ascii"), data]);
    const [length, checksum] = [Buffer.alloc(4), Buffer.alloc(4)];
    length.writeUInt32BE(data.length);
    checksum.writeUInt32BE(crc32(body));
    return Buffer.concat([length, body, checksum]);
}

export function iconPng(size) {
    const rows = Buffer.alloc((size * 3 + 1) * size);
    const pixel = 64 / size;
    for (let row = 0; row < size; ++row) {
        for (let column = 0; column < size; ++column) {
            const nearest = Math.min(...strokes.map(
                (stroke) => distance((column + 0.5) * pixel, (row + 0.5) * pixel, stroke)));
            const white = Math.min(1, Math.max(0, (halfWidth - nearest) / pixel + 0.5));
            ground.forEach((colour, i) => {
                rows[row * (size * 3 + 1) + 1 + column * 3 + i] = Math.round(colour + (255 - colour) * white);
            });
        }
    }
    const header = Buffer.alloc(13);
    header.writeUInt32BE(size, 0);
    header.writeUInt32BE(size, 4);
    header.set([8, 2, 0, 0, 0], 8); // 8 bits, red, green and blue
    return Buffer.concat([
        Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]), chunk("IHDR", header),
        chunk("IDAT", deflateSync(rows, { level: 9 })), chunk("IEND", Buffer.alloc(0)),
    ]);
}
