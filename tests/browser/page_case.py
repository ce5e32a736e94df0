"""A test that looks at a page: opens it, types, reads what shows, and wants no error in the console."""

import unittest
import urllib.parse

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

import setting

SETTLE = "const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => done()));"

# Scrolls through a list of which only the rows in sight are elements.
ROWS = """
const done = arguments[arguments.length - 1];
const box = document.querySelector(arguments[0]);
const found = new Map();
const frame = () => new Promise((go) => requestAnimationFrame(() => requestAnimationFrame(go)));
(async () => {
    const before = box.scrollTop;
    for (let top = 0; ; top += box.clientHeight / 2) {
        box.scrollTop = top;
        await frame();
        for (const row of box.querySelectorAll('.row'))
            found.set(Number(row.dataset.at), {title: row.title, text: row.innerText,
                                               isAside: row.classList.contains('aside')});
        if (top + box.clientHeight >= box.scrollHeight)
            break;
    }
    box.scrollTop = before;
    done([...found.keys()].sort((a, b) => a - b).map((at) => found.get(at)));
})();
"""


class PageCase(unittest.TestCase):
    device_name = "example"

    @classmethod
    def make_device(cls):
        return setting.example_device()

    @classmethod
    def setUpClass(cls):
        cls.device = cls.make_device()
        cls.page = setting.page_of(cls.device, cls.device_name)
        cls.driver = setting.browser()

    def setUp(self):
        self.use_colours("light")
        self.driver.set_window_size(1280, 900)
        self.errors()  # what came before is not this test's

    def tearDown(self):
        self.assertEqual(self.errors(), [], "the console tells errors")

    def errors(self):
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"]

    def use_colours(self, scheme):
        feature = {"name": "prefers-color-scheme", "value": scheme}
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [feature]})

    def open(self, address=""):
        self.driver.get("about:blank")
        self.driver.get(self.page.as_uri() + address)
        WebDriverWait(self.driver, 60).until(
            lambda driver: driver.execute_script("return document.body.classList.contains('ready')")
        )
        self.settle()

    def settle(self):
        self.driver.execute_async_script(SETTLE)

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def find_all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.find(selector).text

    def texts(self, selector):
        """The texts of what shows, each in one line."""
        found = [element.text for element in self.find_all(selector) if element.is_displayed()]
        return [" ".join(text.split()) for text in found]

    def press(self, *keys):
        for key in keys:
            ActionChains(self.driver).send_keys(key).perform()
        self.settle()

    def search(self, view, text):
        box = self.find(f"#{view}-search")
        box.clear()
        box.send_keys(text)
        self.settle()

    def rows(self, selector):
        return self.driver.execute_async_script(ROWS, selector)

    def found_paths(self):
        """The paths in the tree that match, not those that only lead to them."""
        return {row["title"] for row in self.rows("#path-tree") if not row["isAside"]}

    def hash(self):
        return self.driver.execute_script("return decodeURIComponent(location.hash)")

    def focused(self, selector):
        return self.driver.execute_script(
            "return document.activeElement.matches(arguments[0])", selector
        )


def address_of(view, *names, **options):
    """An address as a link would have it."""
    quoted = [urllib.parse.quote(name, safe="") for name in names]
    search = "&".join(f"{key}={urllib.parse.quote(text)}" for key, text in options.items())
    return "#/" + "/".join([view, *quoted]) + (f"?{search}" if search else "")
