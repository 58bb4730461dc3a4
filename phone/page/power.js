// The computer's power, in words.

const reasons = {
    "switched off": "switched off",
    "no session": "no session runs any more",
    battery: "the battery is below 20 %",
    thermal: "the computer runs hot",
    released: "released",
    "released by another": "another program has released the hold",
    heartbeat: "the power daemon has missed our heartbeat",
    connection: "the power daemon is gone",
    "client gone": "the connection to the power daemon was lost",
    silent: "the power daemon does not answer",
    stopping: "the power daemon has been stopped",
    crashed: "the power daemon has crashed",
    busy: "another program keeps it awake",
    unreadable: "the sleep setting can't be read",
    record: "the power daemon can't write its record",
    pmset: "the sleep setting could not be changed",
    gone: "the power daemon is going away",
};

/** Returns the few characters for the head of the page. */
export function powerLabel(power) {
    const battery = power.battery === undefined ? "" : `${power.battery} %`;
    const awake = power.isAwake ? "awake" : "";
    return [battery, awake].filter(Boolean).join(" · ") || "power";
}

/** Returns what the dialog says of the battery, the mains and the hold. */
export function powerFacts(power) {
    const facts = [];
    if (power.battery !== undefined)
        facts.push(`Battery at ${power.battery} %`);
    if (power.mains !== undefined)
        facts.push(power.mains ? "on mains power" : "on battery power");
    if (!power.hasDaemon)
        facts.push("no power daemon answers");
    else if (power.isAwake)
        facts.push(power.holder ? `kept awake by ${power.holder}` : "kept awake");
    else
        facts.push("may sleep");
    return `${facts.join(", ")}.`.replace(/^./, (first) => first.toUpperCase());
}

/** Returns why the hold of this page's switch has ended, or is not granted; "" if neither is so. */
export function powerWhy(power) {
    if (power.why === undefined)
        return "";
    const reason = reasons[power.why] ?? power.why;
    const at = new Date(power.whyAt * 1000).toLocaleTimeString([], { hour: "2-digit", minute: "2-digit" });
    if (power.keeps && power.isAwake)
        return "";
    return power.keeps ? `Not kept awake since ${at}: ${reason}. The switch asks again.`
        : `No longer kept awake since ${at}: ${reason}.`;
}
