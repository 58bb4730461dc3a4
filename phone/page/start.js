// What is asked before a session is started, and why it was not.

export const refusals = {
    rights: "This device may only view.",
    unreachable: "The session host does not answer.",
    words: "The program may not be started with these arguments.",
    folder: "No session may work in this folder.",
    program: "This program may not run in a session.",
    name: "A session of this name runs already.",
    misnamed: "No session can have this name.",
    limit: "There are as many as there may be.",
    system: "The system could not start it.",
    itself: "A session can't be shown in itself.",
    unknown: "There is no such session.",
    ended: "The session has ended.",
};

/** Returns the words of a command line as a shell splits it: blanks, quotes and backslashes. */
export function wordsOf(line) {
    const words = [];
    let word = null;
    let quote = null;
    for (let at = 0; at < line.length; ++at) {
        const c = line[at];
        if (quote) {
            if (c === quote)
                quote = null;
            else
                word += c === "\\" && quote === '"' ? line[++at] ?? "" : c;
        } else if (c === "'" || c === '"') {
            quote = c;
            word ??= "";
        } else if (c === "\\") {
            word = (word ?? "") + (line[++at] ?? "");
        } else if (/\s/.test(c)) {
            if (word !== null)
                words.push(word);
            word = null;
        } else {
            word = (word ?? "") + c;
        }
    }
    if (word !== null)
        words.push(word);
    return words;
}

/** Returns the call for what a person has filled in; empty fields are left out. */
export function startCall({ name, folder, program }, size) {
    const call = { call: "start", cols: size.cols, rows: size.rows };
    if (name.trim())
        call.name = name.trim();
    if (folder.trim())
        call.folder = folder.trim();
    if (program.trim())
        call.words = wordsOf(program);
    return call;
}
