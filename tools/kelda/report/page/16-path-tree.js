// The tree of the device's paths: its nodes, and the rows that show when some nodes are open.

class PathNode {
    constructor(parent, name) {
        this.parent = parent;
        this.name = name;
        this.depth = parent ? parent.depth + 1 : 0;
        this.children = [];
        this.byName = new Map();
        this.id = -1;       // place in the list of paths; -1 for a directory that is not in it
        this.below = 0;     // how many paths lie below it
        this.isOpen = false;
        this.mark = 0;      // of the last search that left it
        this.position = 0;  // among the shown nodes beside it, from 1
        this.shownChildren = 0;
    }

    get path() {
        return this.parent?.parent ? `${this.parent.path}/${this.name}` : this.name;
    }

    get isDirectory() { return this.children.length > 0; }
}

class PathTree {
    #marks = 0;

    /** `names`: the names that each path consists of. */
    constructor(names) {
        this.root = new PathNode(null, ""); // has no name and is not shown
        this.nodes = names.map((path, id) => this.#add(path, id));
    }

    #add(names, id) {
        let node = this.root;
        for (const name of names) {
            ++node.below;
            node = childOf(node, name);
        }
        node.id = id;
        return node;
    }

    /** The node of a path; undefined for none. */
    find(path) {
        let node = this.root;
        for (const name of path.split("/"))
            node = node?.byName.get(name);
        return node;
    }

    /** Marks the nodes of the paths and all above them, for `visible`, and opens those above. */
    markLeadingTo(ids) {
        const mark = ++this.#marks;
        for (const id of ids) {
            let node = this.nodes[id];
            for (; node && node.mark !== mark; node = node.parent) {
                node.mark = mark;
                node.isOpen = true;
            }
        }
        return mark;
    }

    /** The nodes to show, in order: those below open ones and, unless `mark` is 0, so marked. */
    visible(mark) {
        const rows = [];
        addVisible(this.root, mark, rows);
        return rows;
    }

    /** The open nodes, and opening just these. */
    get open() {
        const open = [];
        this.#forEach((node) => { if (node.isOpen) open.push(node); });
        return open;
    }

    set open(nodes) {
        this.#forEach((node) => { node.isOpen = false; });
        for (const node of nodes)
            node.isOpen = true;
    }

    #forEach(operation) {
        const left = [this.root];
        while (left.length > 0) {
            const node = left.pop();
            operation(node);
            for (const child of node.children)
                left.push(child);
        }
    }
}

function childOf(node, name) {
    let child = node.byName.get(name);
    if (!child) {
        child = new PathNode(node, name);
        node.byName.set(name, child);
        node.children.push(child);
    }
    return child;
}

function addVisible(node, mark, rows) {
    let position = 0;
    for (const child of node.children)
        if (mark === 0 || child.mark === mark) {
            child.position = ++position;
            rows.push(child);
            if (child.isOpen)
                addVisible(child, mark, rows);
        }
    node.shownChildren = position;
}

function ancestorsOf(node) {
    const ancestors = [];
    for (let above = node.parent; above?.parent; above = above.parent)
        ancestors.push(above);
    return ancestors;
}
