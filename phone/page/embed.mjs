// Puts the page's files into a C++ source: embed.mjs PAGE NODE_MODULES OUTPUT. Each file is
// compressed once, here, and named by its content, so that a browser keeps what has not changed.
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { gzipSync } from "node:zlib";
import { iconPng } from "./icon.mjs";

const [page, modules, output] = process.argv.slice(2);
const greatestSize = 600 * 1024; // bytes of all files, uncompressed

const script = "text/javascript; charset=utf-8";
const style = "text/css; charset=utf-8";

// The path under which a file is served, where it is or what it contains, and what it is.
const files = [
    ["/", join(page, "index.html"), "text/html; charset=utf-8"],
    ["/style.css", join(page, "style.css"), style],
    ["/xterm.css", join(modules, "@xterm/xterm/css/xterm.css"), style],
    ["/xterm.js", join(modules, "@xterm/xterm/lib/xterm.mjs"), script],
    ["/fit.js", join(modules, "@xterm/addon-fit/lib/addon-fit.mjs"), script],
    ["/icon.svg", join(page, "icon.svg"), "image/svg+xml"],
    ...[180, 192, 512].map((size) => [`/icon-${size}.png`, iconPng(size), "image/png"]),
    ["/manifest.webmanifest", join(page, "manifest.webmanifest"), "application/manifest+json"],
    ...["admission", "connection", "frames", "gestures", "keys", "list", "main", "notify", "power", "start", "terminal",
        "worker"].map(
        (name) => [`/${name}.js`, join(page, `${name}.js`), script]),
];

let size = 0;
const sources = files.map(([path, place, type], index) => {
    // Source maps are not served.
    const content = Buffer.isBuffer(place) ? place
        : Buffer.from(readFileSync(place, "utf8").replace(/\n\/\/# sourceMappingURL=.*\n?$/, "\n"));
    size += content.length;
    const tag = createHash("sha256").update(content).digest("hex").slice(0, 16);
    const bytes = gzipSync(content, { level: 9 });
    return {
        data: `constexpr std::uint8_t file${index}[] = {${[...bytes].join(",")}};`,
        row: `    {.path = "${path}", .contentType = "${type}", .gzipped = file${index}, .tag = "\\"${tag}\\""},`,
    };
});
if (size > greatestSize) {
    console.error(`The page has ${size} bytes, and may have ${greatestSize}.`);
    process.exit(1);
}

writeFileSync(output, `#include "tools/velmo-phone/PageFiles.h"

#include <array>
#include <cstdint>

namespace velmo {

namespace {

${sources.map((source) => source.data).join("\n")}

constexpr auto files = std::to_array<PageFile>({
${sources.map((source) => source.row).join("\n")}
});

} // namespace

std::span<const PageFile> pageFiles() {
    return files;
}

} // namespace velmo
`);
