// Text in which every character shows: control characters and those that turn or hide the text
// beside them are written out, as the program does on a terminal.

const hiddenCharacters = new RegExp("[\\u0000-\\u001f\\u007f-\\u009f" +
    "\\u061c\\u200b-\\u200f\\u2028-\\u202e\\u2060-\\u206f\\ufeff\\u{e0000}-\\u{e007f}]", "gu");

function escapeOf(character) {
    const code = character.codePointAt(0);
    const digits = code.toString(16);
    return code < 0x100 ? `\\x${digits.padStart(2, "0")}` : `\\u{${digits}}`;
}

/** [{text, isEscape}, ...], which together make the text. */
function visibleParts(text) {
    const parts = [];
    let end = 0;
    for (const match of text.matchAll(hiddenCharacters)) {
        if (match.index > end)
            parts.push({text: text.slice(end, match.index), isEscape: false});
        parts.push({text: escapeOf(match[0]), isEscape: true});
        end = match.index + match[0].length;
    }
    if (end < text.length || parts.length === 0)
        parts.push({text: text.slice(end), isEscape: false});
    return parts;
}

function visibleText(text) {
    return visibleParts(text).map((part) => part.text).join("");
}

/** "1 path", "2 paths", "12,345 paths". */
function counted(count, noun) {
    return `${count.toLocaleString("en")} ${noun}${count === 1 ? "" : "s"}`;
}
