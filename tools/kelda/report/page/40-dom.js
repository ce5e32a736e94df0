// Making elements. All text goes through here and is only ever put in as text.

/** An element with attributes (`on`: listeners by event) and children: elements and texts. */
function make(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (name === "on")
            Object.entries(value).forEach(([event, listener]) =>
                element.addEventListener(event, listener));
        else if (value !== undefined && value !== false)
            element.setAttribute(name, value === true ? "" : value);
    }
    element.append(...children.filter((child) => child !== null && child !== undefined));
    return element;
}

const longName = 60; // is broken anywhere

/** Names and lines of the device: every character shows, and none turns what stands beside it. */
function makeName(text, attributes = {}) {
    const {class: more = "", ...rest} = attributes;
    const length = text.length > longName ? "long" : "";
    const name = make("span", {class: `name ${more} ${length}`.trim(), dir: "ltr", ...rest});
    for (const part of visibleParts(text))
        if (part.isEscape)
            name.append(make("span", {class: "escape"}, part.text));
        else
            name.append(...breakable(part.text));
    return name;
}

// The text, which may be broken behind each "/" and "::".
function breakable(text) {
    return text.split(/(?<=\/|::)/).flatMap((piece, at) => at > 0 ? [make("wbr"), piece] : [piece]);
}

/** A path, which may be broken behind each "/", with its "*" set off. */
function makePath(path) {
    const name = make("span", {class: "name path", dir: "ltr"});
    path.split("/").forEach((segment, at) => {
        if (at > 0)
            name.append(make("span", {class: "slash"}, "/"), make("wbr"));
        if (segment.includes("*"))
            name.append(makeName(segment, {class: "star"}));
        else
            name.append(...makeName(segment).childNodes);
    });
    return name;
}

function makeLink(address, content, attributes = {}) {
    return make("a", {href: address, ...attributes}, content);
}

function makeFlags(flags) {
    return flags === "" ? make("span", {class: "none"}, "no flags")
                        : make("code", {class: "flags", title: flagTitle(flags)}, flags);
}

function flagTitle(flags) {
    const words = [flags.includes("r") ? "reads" : "", flags.includes("w") ? "writes" : ""];
    return words.filter((word) => word !== "").join(" and ") || "neither reads nor writes";
}

/** Rows of a term and what belongs to it: [[text, [element, ...]], ...] */
function makeFacts(rows) {
    const list = make("dl", {class: "facts"});
    for (const [term, values] of rows)
        list.append(make("div", {}, make("dt", {}, term),
                         ...values.map((value) => make("dd", {}, value))));
    return list;
}

function makeEmpty(title, ...rest) {
    return make("div", {class: "empty"}, make("p", {class: "empty-title"}, title), ...rest);
}

/** Appends the first items and, for the rest, a button that brings the next piece. */
function appendInPieces(container, items, makeItem, piece, noun) {
    let shown = 0;
    const button = make("button", {type: "button", class: "button"});
    const holder = make("div", {class: "more"}, button);
    const showNext = () => {
        container.append(...items.slice(shown, shown + piece).map(makeItem));
        shown = Math.min(shown + piece, items.length);
        const left = items.length - shown;
        button.textContent = `Show ${Math.min(left, piece)} more (${counted(left, noun)} left)`;
        if (left === 0)
            button.remove();
    };
    button.addEventListener("click", () => {
        const last = container.lastElementChild;
        showNext();
        focusIn(last.nextElementSibling);
    });
    showNext();
    return holder;
}

// Who goes on by keys does so at the first of the new items, not below them or nowhere.
function focusIn(item) {
    const links = "a, button";
    (item.matches(links) ? item : item.querySelector(links))?.focus();
}

/** Tells those who hear the page rather than see it. */
function announce(text) {
    document.getElementById("status").textContent = text;
}

async function copyText(text) {
    try {
        await navigator.clipboard.writeText(text);
        return true;
    } catch {
        return copyBySelection(text);
    }
}

// For browsers that give pages from files no clipboard.
function copyBySelection(text) {
    const before = document.activeElement;
    const area = make("textarea", {class: "off-screen", "aria-hidden": "true"});
    area.value = text;
    document.body.append(area);
    area.select();
    const done = document.execCommand("copy");
    area.remove();
    before?.focus();
    return done;
}

function makeCopyButton(text) {
    const button = make("button", {type: "button", class: "copy", title: "Copy",
                                   "aria-label": `Copy ${visibleText(text)}`});
    button.addEventListener("click", async () => {
        const done = await copyText(text);
        announce(done ? `Copied ${visibleText(text)}` : "The browser did not allow to copy");
        button.classList.toggle("copied", done);
        setTimeout(() => button.classList.remove("copied"), 1500);
    });
    return button;
}

/** "file:line", to be copied. The button stays beside the last name. */
function makePlace(text) {
    const name = makeName(text);
    const tail = make("span", {class: text.length > longName ? "" : "tail"});
    tail.append(name.lastChild, makeCopyButton(text));
    name.append(tail);
    return make("span", {class: "place"}, name);
}
