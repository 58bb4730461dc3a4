// Lets this browser in by the one-time code in the address, which no log on the way has seen.

/** Takes the code out of the address, so that neither the history nor a bookmark keeps it. */
function takeCode() {
    const code = location.hash.slice(1);
    if (code)
        history.replaceState(null, "", location.pathname);
    return /^[0-9a-f]{32}$/.test(code) ? code : null;
}

/** Returns what people call such a device. */
export function deviceName(agent) {
    const kinds = [
        ["iPhone", /iPhone/], ["iPad", /iPad/], ["Android phone", /Android.*Mobile/], ["Android", /Android/],
        ["Mac", /Macintosh/], ["Windows", /Windows/], ["Linux", /Linux/],
    ];
    const browsers = [["Firefox", /Firefox|FxiOS/], ["Edge", /Edg/], ["Chrome", /Chrome|CriOS/], ["Safari", /Safari/]];
    const named = (table) => table.find(([, pattern]) => pattern.test(agent))?.[0];
    return [named(kinds) ?? "browser", named(browsers)].filter(Boolean).join(", ");
}

const refusals = {
    400: "The address does not look like one that velmo-phone has printed.",
    403: "The code has been used already, or is older than two minutes.",
    429: "There have been too many attempts. Wait a few seconds, and open the address again.",
};

/** Returns nothing once this browser is let in, and otherwise the reason why not, perhaps empty. */
export async function letIn() {
    const code = takeCode();
    if (code) {
        const reply = await fetch("/admit", {
            method: "POST",
            headers: { "Content-Type": "application/json" },
            body: JSON.stringify({ code, name: deviceName(navigator.userAgent) }),
        });
        if (!reply.ok)
            return refusals[reply.status] ?? `The computer refused (${reply.status}).`;
    }
    return (await isLetIn()) ? undefined : "";
}

export async function isLetIn() {
    return (await fetch("/device", { cache: "no-store" })).status !== 401;
}
