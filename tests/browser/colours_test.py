"""Every text is readable, in light and in dark, and on narrow windows."""

import re

from page_case import PageCase, address_of

# Every text that shows, with its colour and the colour that it stands on.
TEXTS = """
const opaque = (colour) => !/^rgba\\(.*, 0\\)$|^transparent$/.test(colour);
const backOf = (element) => {
    for (let at = element; at; at = at.parentElement)
        if (opaque(getComputedStyle(at).backgroundColor))
            return getComputedStyle(at).backgroundColor;
    return 'rgb(255, 255, 255)';
};
const found = [];
const walk = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
while (walk.nextNode()) {
    const element = walk.currentNode.parentElement;
    if (walk.currentNode.data.trim() === '' || !element.checkVisibility())
        continue;
    found.push([walk.currentNode.data.trim().slice(0, 40), getComputedStyle(element).color, backOf(element)]);
}
const search = document.querySelector('section:not([hidden]) input[type=search]');
found.push(['placeholder', getComputedStyle(search, '::placeholder').color, backOf(search)]);
found.push(['border of a box', getComputedStyle(search).borderColor, backOf(search.parentElement)]);
return found;
"""
# What the drawing is painted with.
SCALE = """
return [...document.querySelectorAll('.legend span')].map((step) => {
    const {color, backgroundColor} = getComputedStyle(step);
    return [step.className, color, backgroundColor];
}).filter(([name]) => name !== 'step-mark');
"""
VIEWS = ["path", "path/sys/clock", "path/port/*/lane/1", "path/maker/bootLoader/version", "path/none",
         "path?q=Fan::Status", "agent/Routing-%25table", "findings", "matrix/CellKeeper/Routing-%25table"]


def brightness(colour):
    red, green, blue = (float(part) / 255 for part in re.findall(r"[\d.]+", colour)[:3])

    def linear(part):
        return part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4

    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue)


def contrast(one, other):
    bright, dark = sorted((brightness(one), brightness(other)), reverse=True)
    return (bright + 0.05) / (dark + 0.05)


class ColoursTest(PageCase):
    def check_contrast(self):
        lowest = 21
        for view in VIEWS:
            self.open(f"#/{view}")
            for button in self.find_all(".twist-button")[:3]:
                button.click()
            for text, colour, back in self.driver.execute_script(TEXTS):
                wanted = 3 if text == "border of a box" else 4.5
                found = contrast(colour, back)
                lowest = min(lowest, found) if wanted > 4 else lowest
                self.assertGreaterEqual(found, wanted, f"{view}: '{text}' is {colour} on {back}")
        for name, colour, back in self.driver.execute_script(SCALE):
            self.assertGreaterEqual(contrast(colour, back), 4.5, name)
        return lowest

    def test_texts_have_contrast_in_light(self):
        lowest = self.check_contrast()
        self.assertGreater(brightness(self.back_colour()), 0.8)
        print(f"lowest contrast in light: {lowest:.2f}", end=" ")

    def test_texts_have_contrast_in_dark(self):
        self.use_colours("dark")
        lowest = self.check_contrast()
        self.assertLess(brightness(self.back_colour()), 0.05)
        print(f"lowest contrast in dark: {lowest:.2f}", end=" ")

    def back_colour(self):
        return self.driver.execute_script("return getComputedStyle(document.body).backgroundColor")

    def test_the_switch_overrides_what_the_system_wants(self):
        for system, choice, is_dark in [("light", "dark", True), ("dark", "light", False), ("dark", "auto", True)]:
            self.use_colours(system)
            self.open(address_of("matrix"))
            self.driver.execute_script("document.querySelector(`[value=${arguments[0]}]`).click()", choice)
            self.settle()
            self.assertEqual(brightness(self.back_colour()) < 0.05, is_dark)
            drawn = self.driver.execute_script(
                "const pixel = document.querySelector('canvas').getContext('2d').getImageData(9, 9, 1, 1).data;"
                "return `rgb(${pixel[0]}, ${pixel[1]}, ${pixel[2]})`")
            self.assertEqual(brightness(drawn) < 0.05, is_dark, "the drawing follows")

    def test_narrow_windows_scroll_down_only(self):
        for width in (1024, 500):
            self.driver.set_window_size(width, 800)
            for view in VIEWS:
                self.open(f"#/{view}")
                wide = self.driver.execute_script(
                    "return document.documentElement.scrollWidth - document.documentElement.clientWidth")
                self.assertLessEqual(wide, 0, f"{view} at {width}")
                self.assertTrue(self.find("nav").is_displayed())

    def test_a_table_of_mounts_fits_its_box(self):
        for width in (1024, 1280):
            self.driver.set_window_size(width, 800)
            for agent in ("Port-%name$", "Thermal", "Routing-%table"):
                self.open(address_of("agent", agent))
                box = self.find(".table-box")
                self.assertLessEqual(box.get_property("scrollWidth"), box.get_property("clientWidth"), agent)

    def test_in_a_narrow_window_parts_stand_below_each_other(self):
        self.driver.set_window_size(500, 800)
        for view, parts in [("path", ".side, .details"), ("agent", ".side, .details"),
                            ("matrix", ".matrix-main, .side")]:
            self.open(f"#/{view}")
            parts = [part for part in self.find_all(parts) if part.is_displayed()]
            self.assertGreaterEqual(len(parts), 2)
            for part in parts:
                self.assertGreater(part.size["width"], 470, part.get_attribute("class"))

    def test_print_shows_what_is_chosen_and_no_controls(self):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print"})
        self.addCleanup(self.driver.execute_cdp_cmd, "Emulation.setEmulatedMedia", {"media": ""})
        self.open(address_of("path", "sys", "clock"))
        self.assertTrue(self.find("#path-details .card").is_displayed())
        for hidden in ("nav", "#path-search", ".copy", "#path-tree"):
            self.assertFalse(self.find(hidden).is_displayed(), hidden)
