"""Names that mean harm show as text, and nothing of them runs."""

import devices
import setting
from page_case import PageCase, address_of

ELEMENTS = "return [...document.querySelectorAll('script, style, img, b, i, iframe')].map((e) => e.tagName)"


class HostileTest(PageCase):
    device_name = "<img src=x onerror=window.ran=9>{{data}}"

    @classmethod
    def make_device(cls):
        return devices.make_hostile(setting.work() / "hostile")

    @classmethod
    def setUpClass(cls):
        cls.device = cls.make_device()
        cls.page = setting.work() / "hostile.html"
        done = setting.kelda(cls.device, "report", "-o", str(cls.page), "--title", cls.device_name)
        if done.returncode != 0:
            raise RuntimeError(done.stderr)
        cls.driver = setting.browser()
        cls.known = {mount["path"] for mount in setting.ask(cls.device, "who", "**")["mounts"]}
        cls.agents = [agent["name"] for agent in setting.ask(cls.device, "agents")["agents"]]

    def check_harmless(self):
        self.assertIsNone(self.driver.execute_script("return window.ran ?? null"))
        self.assertEqual(sorted(self.driver.execute_script(ELEMENTS)), ["SCRIPT", "SCRIPT", "STYLE"])

    def test_the_device_has_the_names(self):
        self.assertEqual(self.known, {path.replace("\x0b", "") for path in devices.PATHS})
        self.assertEqual(sorted(self.agents), sorted(name.replace("\x0b", "") for name in devices.NAMES))

    def test_every_path_shows_as_text(self):
        self.open()
        shown = {row["title"] for row in self.rows("#path-tree")}
        for path in self.known:
            self.assertIn(visible(path), shown)
        self.check_harmless()

    def test_every_path_is_reached_by_its_address(self):
        for path in sorted(self.known):
            self.open(address_of("path", *path.split("/")))
            self.assertEqual(self.text("#path-details h2"), visible(path))
            self.check_harmless()

    def test_every_path_is_reached_by_its_row(self):
        self.open(address_of("path", q="names/"))
        rows = [row for row in self.find_all("#path-tree .row") if row.get_attribute("aria-level") == "2"]
        titles = [row.get_attribute("title") for row in rows]
        for number, title in enumerate(titles):
            self.find(f"#path-tree-row-{number + 1}").click()
            self.settle()
            self.assertEqual(self.text("#path-details h2"), title)
        self.check_harmless()

    def test_every_agent_shows_as_text(self):
        for agent in self.agents:
            self.open(address_of("agent", agent))
            self.assertEqual(self.text("#agent-details h2"), visible(agent))
            self.assertRegex(self.text("#agent-details .callout h3"), r"^\d+ faults?: this agent would not start$")
            self.find(".twist-button").click()
            self.check_harmless()

    def test_findings_and_matrix_show_as_text(self):
        self.open(address_of("findings"))
        self.assertIn("<script>window.ran=1</script>", self.text("#finding-list"))
        self.check_harmless()
        self.open(address_of("matrix"))
        self.find("#pair-list .row").click()
        self.settle()
        self.assertGreater(len(self.texts("#matrix-details tbody tr")), 5)
        self.check_harmless()

    def test_the_title_is_a_text(self):
        self.open()
        self.assertEqual(self.text(".brand"), self.device_name)
        self.check_harmless()

    def test_control_characters_and_turning_ones_are_written_out(self):
        self.open(address_of("path", "names", "\x1b[31mred\x07"))
        self.assertEqual(self.text("#path-details h2"), "names/\\x1b[31mred\\x07")
        self.open(address_of("path", "names", "abc\u202egnp.exe"))
        self.assertEqual(self.text("#path-details h2"), "names/abc\\u{202e}gnp.exe")
        self.assertEqual(self.texts("#path-details h2 .escape"), ["\\u{202e}"])

    def test_searches_for_anything_are_harmless(self):
        self.open()
        for text in ["<img/src=x/onerror=window.ran=6>", "type:__proto__", "agent:constructor", "((((", "[a-", "\\",
                     "*" * 60 + "a", "**/" * 40 + "x", "flag:<b>", "path:", ":", "type:" + "*a" * 80]:
            self.search("path", text)
            self.check_harmless()
        self.search("path", "names/__proto__")
        self.assertEqual(self.found_paths(), {"names/__proto__"})

    def test_long_names_do_not_widen_the_page(self):
        self.open(address_of("path", "names", devices.LONG))
        wide = "return document.documentElement.scrollWidth <= document.documentElement.clientWidth"
        self.assertTrue(self.driver.execute_script(wide))
        details = self.find("#path-details")
        self.assertLessEqual(details.get_property("scrollWidth"), details.get_property("clientWidth"))


def visible(text):
    """As the page shows it: control characters and those that turn or hide others are written out."""
    def shown(character):
        code = ord(character)
        if code < 0x20 or 0x7F <= code < 0xA0:
            return f"\\x{code:02x}"
        hidden = code in (0x61C, 0xFEFF) or 0x200B <= code <= 0x200F or 0x2028 <= code <= 0x202E
        return f"\\u{{{code:x}}}" if hidden else character

    return "".join(shown(character) for character in text)
