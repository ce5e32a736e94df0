"""Addresses, Back, and the whole page by keyboard alone."""

import devices
import setting
from page_case import PageCase, address_of
from selenium.webdriver.common.keys import Keys

# How the focused element shows that it has the focus: its own outline, or that of what stands for it.
OUTLINE = """
let at = document.activeElement;
if (at.type === 'radio')
    at = at.nextElementSibling;
const {outlineStyle, outlineWidth} = getComputedStyle(at);
return outlineStyle !== 'none' && parseFloat(outlineWidth) >= 1;
"""
FOCUSED = """
const at = document.activeElement;
return at.id || at.value || at.className || at.tagName;
"""


class AddressTest(PageCase):
    def test_each_view_is_reached_by_its_address(self):
        for view in ("path", "agent", "findings", "matrix"):
            self.open(address_of(view))
            shown = [section.get_attribute("id") for section in self.find_all("main > section")
                     if section.is_displayed()]
            self.assertEqual(shown, [f"view-{view}"])
            self.assertEqual(self.find('nav [aria-current="page"]').get_attribute("id"), f"link-{view}")

    def test_an_address_without_sense_leads_to_the_paths(self):
        for address in ("#nonsense", "#/", "#/../../etc", "#/path/%E0%A4%A", "#/%3Cscript%3E?q=%zz"):
            self.open(address)
            self.assertTrue(self.find("#view-path").is_displayed())

    def test_a_search_is_part_of_the_address(self):
        self.open(address_of("path", q="flag:w cell/"))
        self.assertEqual(self.find("#path-search").get_attribute("value"), "flag:w cell/")
        self.assertEqual(self.text("#path-count"), "3 paths with 3 matching mounts")
        self.search("path", "ipv6")
        self.assertEqual(self.hash(), "#/path?q=ipv6")

    def test_back_and_forward_return_to_what_was_chosen(self):
        self.open(address_of("path", "sys", "clock"))
        self.find(".card .chip").click()
        self.settle()
        self.assertEqual(self.text("#agent-details h2"), "CellKeeper")
        self.find("#link-matrix").click()
        self.settle()
        self.driver.back()
        self.settle()
        self.assertEqual(self.hash(), "#/agent/CellKeeper")
        self.assertEqual(self.text("#agent-details h2"), "CellKeeper")
        self.driver.back()
        self.settle()
        self.assertEqual(self.text("#path-details h2"), "sys/clock")
        self.driver.forward()
        self.settle()
        self.assertEqual(self.text("#agent-details h2"), "CellKeeper")

    def test_the_link_of_a_view_leads_back_to_where_it_was_left(self):
        self.open(address_of("path", "sys", "clock", q="sys"))
        self.find("#link-findings").click()
        self.settle()
        self.find("#link-path").click()
        self.settle()
        self.assertEqual(self.hash(), "#/path/sys/clock?q=sys")

    def test_the_title_names_what_is_chosen(self):
        self.open(address_of("agent", "Thermal"))
        self.assertEqual(self.driver.title, "Thermal – example")


class KeyboardTest(PageCase):
    def active_row(self, box):
        row = self.find(box).get_attribute("aria-activedescendant")
        return self.find(f"#{row}").get_attribute("title")

    def test_the_skip_link_comes_first(self):
        self.open()
        self.press(Keys.TAB)
        self.assertTrue(self.focused(".skip"))
        self.press(Keys.ENTER)
        self.assertTrue(self.focused("#main"))
        self.assertEqual(self.hash(), "")
        self.press(Keys.TAB)
        self.assertTrue(self.focused("#path-search"))

    def test_every_stop_of_the_tab_key_shows_its_focus(self):
        for view, name in [("path", "sys/clock"), ("agent", "Thermal"), ("findings", ""), ("matrix", "")]:
            self.open(address_of(view, *name.split("/")) if name else address_of(view))
            stops = []
            for _ in range(16):
                self.press(Keys.TAB)
                if self.focused("body"):
                    break  # once around
                stops.append(self.driver.execute_script(FOCUSED))
                self.assertTrue(self.driver.execute_script(OUTLINE), f"{view}: {stops}")
            self.assertIn("link-path", stops)
            self.assertIn("auto", stops)

    def test_a_slash_leads_to_the_search_of_each_view(self):
        for view, box in [("path", "path"), ("agent", "agent"), ("findings", "finding"), ("matrix", "matrix")]:
            self.open(address_of(view))
            self.press("/")
            self.assertTrue(self.focused(f"#{box}-search"), view)
            self.press("/")
            self.assertEqual(self.find(f"#{box}-search").get_attribute("value"), "/")

    def test_from_the_search_through_the_tree_to_a_path(self):
        self.open()
        self.press("/", *"tray", Keys.ARROW_DOWN)
        self.assertTrue(self.focused("#path-tree"))
        self.assertEqual(self.active_row("#path-tree"), "hardware")
        self.press(Keys.END)
        self.assertEqual(self.active_row("#path-tree"), "hardware/fan/tray/*/status")
        self.press(Keys.ARROW_UP, Keys.ENTER)
        self.assertEqual(self.hash(), "#/path/hardware/fan/tray/*/speed?q=tray")
        self.assertEqual(self.text("#path-details h2"), "hardware/fan/tray/*/speed")
        self.assertTrue(self.focused("#path-tree"))
        self.press(Keys.TAB)
        self.assertTrue(self.focused("#path-details, #path-details *"))

    def test_arrows_open_and_close_the_tree(self):
        self.open()
        self.find("#path-tree").send_keys(Keys.HOME)
        self.assertEqual(self.active_row("#path-tree"), "agent")
        expanded = lambda: self.find("#path-tree .active").get_attribute("aria-expanded")
        self.assertEqual(expanded(), "true")
        rows = len(self.rows("#path-tree"))
        self.press(Keys.ARROW_LEFT)
        self.assertEqual(expanded(), "false")
        self.assertEqual(len(self.rows("#path-tree")), rows - 5)
        self.press(Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
        self.assertEqual(self.active_row("#path-tree"), "agent/*")
        self.press(Keys.ARROW_LEFT, Keys.ARROW_LEFT)
        self.assertEqual(self.active_row("#path-tree"), "agent")

    def test_letters_lead_to_a_name(self):
        self.open()
        self.find("#path-tree").send_keys(Keys.HOME)
        self.press(*"rou")
        self.assertEqual(self.active_row("#path-tree"), "route")

    def test_rows_tell_their_place_in_the_tree(self):
        self.open()
        row = next(row for row in self.find_all("#path-tree .row") if row.get_attribute("title") == "agent/*/log")
        told = {name: row.get_attribute(f"aria-{name}") for name in ("level", "setsize", "posinset", "expanded")}
        self.assertEqual(told, {"level": "3", "setsize": "2", "posinset": "2", "expanded": None})
        self.assertEqual(row.get_attribute("role"), "treeitem")

    def test_agents_are_chosen_by_keys_and_a_mount_unfolded(self):
        self.open(address_of("agent"))
        self.press("/", *"Thermal", Keys.ARROW_DOWN, Keys.ENTER)
        self.assertEqual(self.hash(), "#/agent/Thermal?q=Thermal")
        while not self.focused(".twist-button"):
            self.press(Keys.TAB)
        self.press(Keys.ENTER)
        self.assertEqual(len(self.texts(".unfolded .written")), 1)

    def test_a_followed_link_takes_the_focus_along(self):
        self.open(address_of("path", "sys", "clock"))
        self.find(".card .chip").send_keys(Keys.ENTER)
        self.settle()
        self.assertTrue(self.focused("#agent-details h2"))

    def test_the_colours_are_switched_by_keys(self):
        self.open()
        self.find("#theme input").send_keys(Keys.ARROW_RIGHT)
        self.press(Keys.ARROW_RIGHT)
        self.assertEqual(self.find("html").get_attribute("data-theme"), "dark")

    def test_every_control_has_a_name(self):
        for view in ("path/sys/clock", "agent/Thermal", "findings", "matrix"):
            self.open(f"#/{view}")
            nameless = [element.get_attribute("outerHTML") for element in
                        self.find_all("button, a, input, [tabindex='0']")
                        if element.is_displayed() and not element.accessible_name]
            self.assertEqual(nameless, [])


class LongListTest(PageCase):
    device_name = "long"

    @classmethod
    def make_device(cls):
        lines = "".join(f"m/{number:03}, T, r\n" for number in range(220))
        return devices.make_device(setting.work() / "long", {"M": lines.replace(", r", "")},
                                   {"A": f"agentName: A\n{lines}"})

    def focused_name(self):
        return self.driver.execute_script("return document.activeElement.getAttribute('aria-label')")

    def test_who_asks_for_more_by_a_key_goes_on_at_what_came(self):
        self.open(address_of("agent", "A"))
        self.assertEqual(self.texts("#agent-details .more"), ["Show 100 more (120 mounts left)"])
        self.find("#agent-details .more button").send_keys(Keys.ENTER)
        self.assertEqual(self.focused_name(), "Lines of m/100")
        self.assertEqual(self.texts("#agent-details .more"), ["Show 20 more (20 mounts left)"])
        self.find("#agent-details .more button").send_keys(Keys.ENTER)
        self.assertEqual(self.focused_name(), "Lines of m/200")
        self.assertEqual(self.texts("#agent-details .more"), [])
        self.assertEqual(len(self.find_all(".mounts tbody")), 220)
