"""What all tests share: the program, one browser, and a folder for pages."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
from types import SimpleNamespace

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

SWITCHES = [
    "--headless=new",
    "--no-sandbox",
    "--disable-gpu",
    "--disable-quic",
    "--disable-dev-shm-usage",
    "--no-first-run",
    "--disable-background-networking",
    "--disable-component-update",
    "--disable-sync",
    "--window-size=1280,900",
    "--force-device-scale-factor=1",
]

_now = SimpleNamespace(program=None, source=None, work=None, driver=None)


def begin(program, source):
    _now.program = str(pathlib.Path(program).resolve())
    _now.source = pathlib.Path(source).resolve()
    _now.work = pathlib.Path(tempfile.mkdtemp(prefix="kelda-browser-"))


def end():
    if _now.driver:
        _now.driver.quit()
    shutil.rmtree(_now.work, ignore_errors=True)


def work():
    return _now.work


def example_device():
    return _now.source / "examples" / "device"


def openconfig():
    return _now.source.parent / "shared" / "corpus" / "openconfig"


def browser():
    """The browser, started when the first test needs it."""
    if not _now.driver:
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for switch in SWITCHES + [f"--user-data-dir={_now.work / 'browser'}"]:
            options.add_argument(switch)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        _now.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)
        _now.driver.set_script_timeout(60)
    return _now.driver


def kelda(device, *words):
    """Runs the program on a device, as a user without settings of their own."""
    unset = ("KELDA_", "MFI_", "PROFILEMULTI", "Q9")
    environment = {name: text for name, text in os.environ.items() if not name.startswith(unset)}
    folders = ["--preinit", "preinit"]
    if words[0] != "preinit":
        folders += ["--profiles", "profiles"]
    return subprocess.run(
        [_now.program, *words, *folders], cwd=device, env=environment, capture_output=True, check=False
    )


def ask(device, *words):
    """What the program answers, as JSON."""
    answer = kelda(device, *words, "--format", "json").stdout
    return json.loads(answer) if answer else None


def page_of(device, name):
    """The report of a device as a file; written once."""
    page = _now.work / f"{name}.html"
    if not page.exists():
        done = kelda(device, "report", "-o", str(page), "--title", name)
        if done.returncode != 0:
            raise RuntimeError(done.stderr.decode(errors="replace"))
    return page
