"""Devices that tests make: one with names that mean harm, and a large one."""

import random

LONG = "long" * 150
# As names of paths, types and agents. In these files blanks count for nothing, a "/" ends a name, "#"
# begins a comment, and a "=" makes an alias of a line.
NAMES = [
    "<script>alert(1)<script>",
    "<img\x0bsrc\x0bonerror>",
    "\"'><b>bold",
    "&lt;&amp;&quot;",
    "{{data}}{{script}}",
    "<!--",
    "__proto__",
    "constructor",
    "toString",
    "\x1b[31mred\x07",
    "abc\u202egnp.exe",
    "zero\u200bwidth\ufeff",
    "\u05d0\u05d1\u05d2",
    "javascript:alert(2)",
    "question?mark&q",
    "50\u20ac\U0001f600",
    LONG,
]
PATHS = [f"names/{name}" for name in NAMES] + [
    "closing/</script><script>alert(3)</script>",
    "closing/</style><style>*{display:none}</style>",
    "slashes//twice",
]
# Lines that are faults, and show in messages only.
LINES = [
    "<img src=x onerror=alert(4)>",
    "'onfocus='alert(5)'autofocus='",
    "<script>window.ran=1</script>",
    "<svg/onload=alert(6)>",
]


def make_device(folder, preinit, profiles):
    """Files with the given texts, by their names."""
    for kind, texts in (("preinit", preinit), ("profiles", profiles)):
        (folder / kind).mkdir(parents=True, exist_ok=True)
        for name, text in texts.items():
            (folder / kind / name).write_bytes(text.encode())
    return folder


def make_hostile(folder):
    """Every name is a path, an agent and a type."""
    declared = [f"{path}, {kind}\n" for path, kind in zip(PATHS, NAMES[:-1] + ["T"] * 4)]
    faults = "".join(f"{line}\n" for line in LINES)
    profiles = {}
    for number, name in enumerate(NAMES):
        mounts = "".join(f"{path}, T, {'rw' if number % 2 else 'r'}\n" for path in PATHS)
        text = f"agentName: {name}\nMountGroup: {name}\n{mounts}{faults}"
        profiles[f"<i>{number}'\"&\x1b"] = text
    return make_device(folder, {"<b>A": "".join(declared)}, profiles)


def make_large(folder, agents=300, paths=10_000, mounts_of_each=350):
    """Parts of a device with tokens; every agent mounts paths of many parts, and included ones."""
    chance = random.Random(4)
    names = [_large_path(number) for number in range(paths)]
    preinit = {f"Part{part}": _large_part(names, part) for part in range(50)}
    profiles = {f"shared.{shared}": _large_mounts(names, chance.sample(range(paths), 50), "r")
                for shared in range(20)}
    for agent in range(agents):
        own = chance.sample(range(paths), mounts_of_each - 100)
        included = "".join(f"Include: shared.{shared}\n" for shared in chance.sample(range(20), 2))
        profiles[f"Agent{agent:03}"] = (f"agentName: Agent{agent:03}-%slot\nMountGroup: own, 10\n"
                                        f"{_large_mounts(names, own, chance.choice(['r', 'rw', 'w']))}{included}")
    profiles["DefaultMountGroup"] = _large_mounts(names, [at for at in range(40) if at % 4], "r")
    return make_device(folder, preinit, profiles)


def _large_path(number):
    part, item = number % 50, number // 50
    middle = "slot/%slot" if number % 4 == 0 else f"unit/{number % 7}"
    return f"part{part}/{middle}/group{item % 12}/item{item}/state"


def _large_part(names, part):
    return "".join(f"{names[at]}, Part{part}::State{at % 40}{', createOnMount' if '%' in names[at] else ''}\n"
                   for at in range(part, len(names), 50))


def _large_mounts(names, numbers, flags):
    return "".join(f"{names[at]}, Part{at % 50}::State{at % 40}, {flags}\n" for at in sorted(numbers))
